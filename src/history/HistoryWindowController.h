// Owns the floating history panel: creates it when it is first needed, has it shown, answers its keys, and
// counts how often it has been opened.
#pragma once

#include "history/HistoryViewModel.h"
#include "platform/KeyEvent.h"
#include "platform/RelativeDateTimeFormatter.h"
#include "platform/UserDefaults.h"
#include "platform/WindowPresenter.h"
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
    // All outlive the controller. Sets the view model's `onDismiss`, which from now on hides the panel.
    HistoryWindowController(HistoryViewModel& viewModel, Pasteboard& pasteboard, WindowPresenter& presenter,
                            UserDefaults& defaults, const RelativeDateTimeFormatter& relativeTimes);
    ~HistoryWindowController() override;

    // The panel; null until the first show(), then kept.
    FloatingPanel* window() const { return m_window.get(); }

    // Places the panel, gives it the keyboard and loads the list afresh, whether it is visible already or
    // not. Some openings let the shared UpdateChecker look for a newer version. Without a screen, shows and
    // counts nothing.
    void show();

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void createWindow();
    void hide();
    void trackWindowOpen();
    void countOpenings();
    void countOpening();
    bool handleKey(const KeyEvent& event);
    void handleCommandC();

    HistoryViewModel& m_viewModel;
    Pasteboard& m_pasteboard;
    WindowPresenter& m_presenter;
    UserDefaults& m_defaults;
    const RelativeDateTimeFormatter& m_relativeTimes;
    std::unique_ptr<FloatingPanel> m_window;
    HistoryView* m_view = nullptr; // inside the panel
    std::unique_ptr<LocalKeyMonitor> m_localEventMonitor;
    QTimer m_countTimer;
    int m_uncountedOpenings = 0;
};

} // namespace corvatto
