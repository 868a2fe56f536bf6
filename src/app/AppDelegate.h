// The composition root: creates every long-lived object once, connects them, starts capture and shortcut at
// launch, and stops both at termination.
#pragma once

#include "app/Platform.h"
#include "app/PreferencesWindow.h"
#include "app/StatusItem.h"
#include "capture/ClipboardMonitor.h"
#include "history/HistoryViewModel.h"
#include "history/HistoryWindowController.h"
#include "hotkey/HotKeyManager.h"
#include "platform/Alerts.h"
#include "platform/RelativeDateTimeFormatter.h"
#include "platform/UserDefaults.h"
#include "settings/Preferences.h"
#include "settings/SettingsReport.h"
#include "store/ClipboardStore.h"
#include "ui/LocalKeyMonitor.h"

#include <memory>
#include <optional>

namespace corvatto {

// What is the same on every display system. All outlive the delegate.
struct Environment {
    QString version;                     // of the program
    QString applicationSupportDirectory; // empty when there is none
    UserDefaults& defaults;
    Alerts& alerts;
    const RelativeDateTimeFormatter& relativeTimes;
};

// Main thread.
class AppDelegate : public QObject {
    Q_OBJECT

public:
    // Opens the history database. What `platform` refers to outlives the delegate.
    AppDelegate(const Environment& environment, const Platform& platform);

    void applicationDidFinishLaunching();
    void applicationWillTerminate();

    // Shows the history panel, or hides it when it is visible.
    void toggleHistoryWindow();

    // Shows the history panel, whether it is visible or not.
    void showHistoryWindow();

    void openPreferences();
    void showAboutPanel();

    // Ends the program once the clipboard's content has been handed over.
    void terminate();

private:
    ClipboardMonitor& monitor();
    HotKeyManager& hotKeyManager();
    HistoryViewModel& viewModel();
    HistoryWindowController& windowController();

    void setupMenuBar();
    void observeHotkeyChanges();
    void setupAppShortcuts();
    bool confirmClearAll();

    bool m_isConfirmingClearAll = false;
    Environment m_environment;
    std::optional<SettingsReport> m_settingsReport;
    Platform m_platform;
    Preferences m_preferences;
    ClipboardStore m_store;
    // Created on first use. Destroyed in the reverse order: the controller before the model that it shows.
    std::unique_ptr<ClipboardMonitor> m_monitor;
    std::unique_ptr<HotKeyManager> m_hotKeyManager;
    std::unique_ptr<HistoryViewModel> m_viewModel;
    std::unique_ptr<HistoryWindowController> m_windowController;
    std::unique_ptr<StatusItem> m_statusItem;
    std::unique_ptr<PreferencesWindow> m_preferencesWindow;
    std::unique_ptr<LocalKeyMonitor> m_keyMonitor;
};

} // namespace corvatto
