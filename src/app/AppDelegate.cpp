#include "app/AppDelegate.h"

#include "app/AboutPanel.h"
#include "history/FloatingPanel.h"
#include "preferences/PreferencesView.h"
#include "settings/LaunchDefaults.h"
#include "settings/Shortcut.h"

#include <QGuiApplication>
#include <QPointer>
#include <QScopedValueRollback>

namespace corvatto {

AppDelegate::AppDelegate(const Environment& environment, const Platform& platform)
    : m_environment(environment), m_platform(platform), m_preferences(environment.defaults),
      m_store(environment.applicationSupportDirectory, m_preferences) {}

ClipboardMonitor& AppDelegate::monitor() {
    if (!m_monitor) {
        m_monitor =
            std::make_unique<ClipboardMonitor>(m_store, m_platform.pasteboard, m_environment.defaults);
    }
    return *m_monitor;
}

HotKeyManager& AppDelegate::hotKeyManager() {
    if (!m_hotKeyManager) {
        m_hotKeyManager = std::make_unique<HotKeyManager>(m_platform.hotKeyCenter, m_environment.defaults);
    }
    return *m_hotKeyManager;
}

HistoryViewModel& AppDelegate::viewModel() {
    if (!m_viewModel) {
        m_viewModel = std::make_unique<HistoryViewModel>(m_store, m_platform.pasteboard);
    }
    return *m_viewModel;
}

HistoryWindowController& AppDelegate::windowController() {
    if (!m_windowController) {
        m_windowController = std::make_unique<HistoryWindowController>(
            viewModel(), m_platform.pasteboard, m_platform.presenter, m_environment.defaults,
            m_environment.relativeTimes);
    }
    return *m_windowController;
}

void AppDelegate::applicationDidFinishLaunching() {
    // The program goes on when all its windows are hidden, and never appears in the task bar.
    QGuiApplication::setQuitOnLastWindowClosed(false);
    m_platform.presenter.becomeAccessory();
    registerLaunchDefaults(m_environment.defaults);
    m_settingsReport.emplace(m_environment.defaults);

    HistoryViewModel& model = viewModel();
    model.monitor = &monitor();
    viewModel().showPreferences = [self = QPointer(this)] {
        if (self) {
            self->openPreferences();
        }
    };
    viewModel().showAbout = [self = QPointer(this)] {
        if (self) {
            self->showAboutPanel();
        }
    };
    viewModel().confirmClearAll = [self = QPointer(this)] {
        return self && self->confirmClearAll();
    };
    monitor().onNewItem = [self = QPointer(this)] {
        if (self) {
            self->viewModel().refresh();
        }
    };

    setupMenuBar();
    monitor().start();
    hotKeyManager().registerStoredHotKey();
    hotKeyManager().onHotKeyPressed = [self = QPointer(this)] {
        if (self) {
            self->toggleHistoryWindow();
        }
    };
    observeHotkeyChanges();
    setupAppShortcuts();

    windowController().show();
}

void AppDelegate::applicationWillTerminate() {
    monitor().checkNow();
    monitor().finish();
    monitor().stop();
    hotKeyManager().unregister();
}

void AppDelegate::toggleHistoryWindow() {
    FloatingPanel* panel = windowController().window();
    if (panel != nullptr && panel->isVisible()) {
        m_platform.presenter.hidePanel(*panel);
    } else {
        windowController().show();
    }
}

void AppDelegate::showHistoryWindow() {
    windowController().show();
}

void AppDelegate::terminate() {
    // Not quit(), which closes every window first and stops when one refuses, as the panel does.
    m_platform.pasteboard.handOver([] { QCoreApplication::exit(); });
}

void AppDelegate::setupMenuBar() {
    m_statusItem = std::make_unique<StatusItem>(m_platform.tray, StatusItem::Actions{
                                                                     [this] { showHistoryWindow(); },
                                                                     [this] { viewModel().clearAll(); },
                                                                     [this] { openPreferences(); },
                                                                     [this] { showAboutPanel(); },
                                                                     [this] { terminate(); },
                                                                 });
}

void AppDelegate::openPreferences() {
    if (!m_preferencesWindow) {
        auto* view = new PreferencesView(m_environment.defaults, m_platform.pasteboard);
        connect(view, &PreferencesView::sameShortcutRecorded, this,
                [this] { hotKeyManager().registerIfMissing(); });
        view->showTrigger(hotKeyManager().trigger());
        connect(&hotKeyManager(), &HotKeyManager::triggerChanged, view, &PreferencesView::showTrigger);
        m_preferencesWindow = std::make_unique<PreferencesWindow>(view);
        connect(view, &PreferencesView::recordingShortcutChanged, this, [this](bool isRecording) {
            m_platform.presenter.setTakesAllKeys(*m_preferencesWindow, isRecording);
        });
    }
    hotKeyManager().registerIfMissing(); // whoever has no shortcut comes here
    m_preferencesWindow->show();
    m_preferencesWindow->raise();
    m_platform.presenter.activate(*m_preferencesWindow);
    m_preferencesWindow->centre(); // at every opening, even if the user had moved it
}

void AppDelegate::showAboutPanel() {
    m_environment.alerts.runModal(aboutAlert(m_environment.version));
}

void AppDelegate::setupAppShortcuts() {
    m_keyMonitor = std::make_unique<LocalKeyMonitor>([this](const KeyEvent& event) {
        const bool opens = event.keyCode == keyComma && (event.modifierFlags & commandFlag) != 0;
        if (opens) {
            openPreferences();
        }
        return opens;
    });
}

void AppDelegate::observeHotkeyChanges() {
    // The notification comes for every setting; only a change of the shortcut counts.
    connect(&m_environment.defaults, &UserDefaults::didChange, this,
            [this, lastSeen = storedShortcut(m_environment.defaults)]() mutable {
                const Shortcut stored = storedShortcut(m_environment.defaults);
                if (stored == lastSeen) {
                    return;
                }
                lastSeen = stored;
                const Shortcut effective = registeredShortcut(m_environment.defaults);
                hotKeyManager().reregister(effective.keyCode, effective.modifiers);
            });
}

bool AppDelegate::confirmClearAll() {
    // A tray on the bus passes on what is chosen in its menu also while an alert is open.
    if (m_isConfirmingClearAll) {
        return false;
    }
    const QScopedValueRollback confirming(m_isConfirmingClearAll, true);
    return m_environment.alerts.runModal({QStringLiteral("清空历史记录"),
                                          QStringLiteral("你正在清除全部历史记录，清除后无法恢复。"),
                                          Alert::Style::Warning,
                                          {QStringLiteral("确定"), QStringLiteral("取消")}}) == 0;
}

} // namespace corvatto
