// Owns the floating history panel: creates it when it is first needed, places it along the bottom of the
// screen under the mouse, brings it to the front, answers its keys, and counts how often it has been opened.
#pragma once

#include "history/HistoryViewModel.h"
#include "platform/KeyEvent.h"
#include "platform/PanelWindows.h"
#include "platform/RelativeDateTimeFormatter.h"
#include "platform/Screens.h"
#include "platform/UserDefaults.h"
#include "ui/LocalKeyMonitor.h"

#include <QTimer>

#include <memory>

namespace corvatto {

class FloatingPanel;
class HistoryView;

// Main thread.
class HistoryWindowController : public QObject {
    Q_OBJECT

public:
    // What the panel needs of the desktop. All outlive the controller.
    struct Desktop {
        Pasteboard& pasteboard;
        Screens& screens;
        PanelWindows& panelWindows;
        UserDefaults& defaults;
        const RelativeDateTimeFormatter& relativeTimes;
    };

    // The view model outlives the controller, whose panel becomes what it dismisses.
    HistoryWindowController(HistoryViewModel& viewModel, const Desktop& desktop);
    ~HistoryWindowController() override;

    // The panel; null until the first show(), then kept.
    FloatingPanel* window() const { return m_window.get(); }

    // Places the panel, gives it the keyboard and loads the list afresh, whether it is visible already or
    // not. Some openings let the shared UpdateChecker look for a newer version.
    void show();

    // The panel's frame on a screen with this visible frame.
    static QRect panelFrame(const QRect& visibleFrame);

private:
    void createWindow();
    void place(const Screen& screen);
    void placeAgain();
    void takeFront();
    void showAgainIfLost();
    std::optional<Screen> currentScreen() const;
    void trackWindowOpen();
    bool handleKey(const KeyEvent& event);
    void handleCommandC();

    HistoryViewModel& m_viewModel;
    Desktop m_desktop;
    std::unique_ptr<FloatingPanel> m_window;
    HistoryView* m_view = nullptr; // inside the panel
    std::unique_ptr<LocalKeyMonitor> m_localEventMonitor;
    QPoint m_screenOrigin; // of the screen that the panel was placed on
    QTimer m_lookAfterShowing;
    int m_attemptsLeft = 0; // to show a panel that was lost
};

} // namespace corvatto
