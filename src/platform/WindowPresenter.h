// Presents the program's windows on the desktop: puts the history panel in its place, above the others and
// with the keyboard, and brings other windows to the front.
//
// Where the panel goes is for the implementation to decide, because not every display system lets a program
// know the pointer or place a window. PanelPlacement.h has the rules for those that do.
#pragma once

class QWidget;

namespace corvatto {

// Main thread.
class WindowPresenter {
public:
    WindowPresenter() = default;
    virtual ~WindowPresenter() = default;
    WindowPresenter(const WindowPresenter&) = delete;
    WindowPresenter& operator=(const WindowPresenter&) = delete;

    // Makes the program an accessory: windows shown from now on get no entry in task bar and pager.
    virtual void becomeAccessory() = 0;

    // Shows the top-level `panel` along the bottom of the screen that the user is working on, as far as the
    // display system can tell, on every desktop, above all other windows, full-screen ones too, and gives it
    // the keyboard. A panel that is visible already is placed and activated again. As long as it is visible,
    // it is placed again when the screens change. One panel only, which may be destroyed at any time.
    //
    // False, and nothing is shown, when there is no screen.
    virtual bool showPanel(QWidget& panel) = 0;

    virtual void hidePanel(QWidget& panel) = 0;

    // Brings the visible top-level `window` to the desktop that the user works on, and gives it the keyboard,
    // even while another application is in front.
    virtual void activate(QWidget& window) = 0;

    // While it `takes` all keys, those that the desktop would act on itself come to the visible top-level
    // `window`, too, where the display system lets a program ask for that. One window only.
    virtual void setTakesAllKeys(QWidget& window, bool takes) = 0;
};

} // namespace corvatto
