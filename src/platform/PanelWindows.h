// What the program's windows, and its floating panel above all, need of the window manager beyond what Qt
// asks for.
#pragma once

class QWidget;

namespace corvatto {

class PanelWindows {
public:
    PanelWindows() = default;
    virtual ~PanelWindows() = default;
    PanelWindows(const PanelWindows&) = delete;
    PanelWindows& operator=(const PanelWindows&) = delete;

    // Makes the program an accessory: no window that it shows from now on has a place in task bar and pager.
    virtual void becomeAccessory() = 0;

    // Makes the top-level `panel` float above other windows, also full-screen ones, on every desktop. To be
    // called before each time a hidden panel is shown: window managers forget.
    virtual void prepareToShow(QWidget& panel) = 0;

    // Asks once more for the same, when the panel has been shown: a window manager that hears late of the
    // hiding before takes away what was prepared.
    virtual void confirmShown(QWidget& panel) = 0;

    // Asks again to show the visible `panel` if it has not come on screen, and answers whether that was so. A
    // window manager that has just started may have missed the request. One that is only slow loses nothing
    // by being asked twice.
    virtual bool askAgainToShow(QWidget& panel) = 0;

    // Gives the keyboard to the visible `panel`, also while another application is in front.
    virtual void activate(QWidget& panel) = 0;
};

} // namespace corvatto
