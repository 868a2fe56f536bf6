// The content of the preferences window: history limits, polling interval, shortcut, update check. Every
// control stores its setting the moment it is changed; whoever depends on a setting follows it from there.
#pragma once

#include "platform/Pasteboard.h"
#include "platform/UserDefaults.h"
#include "settings/Shortcut.h"

#include <QWidget>

#include <functional>

class QLabel;
class QSlider;
class QVBoxLayout;

namespace corvatto {

class LimitField;
class ShortcutRecorder;

class PreferencesView : public QWidget {
    Q_OBJECT

public:
    static constexpr int controlWidth = 498; // points

    // The settings and the pasteboard outlive the view. Its button needs the shared UpdateChecker.
    PreferencesView(UserDefaults& defaults, const Pasteboard& pasteboard);

    // Called after the stored shortcut has changed. May be unset.
    std::function<void()> onHotkeyChanged;

    // Shows the desktop's words for what triggers the shortcut; empty shows what is stored.
    void showTrigger(const QString& trigger);

Q_SIGNALS:
    // The user has recorded the shortcut that is stored already.
    void sameShortcutRecorded();

    void recordingShortcutChanged(bool isRecording);

protected:
    void showEvent(QShowEvent* event) override;

private:
    QVBoxLayout* addSection(const QString& title, int spacing);
    void addRow(QVBoxLayout& section, const QString& label, const QString& help, QWidget* control);
    void buildHistorySection(const Pasteboard& pasteboard);
    void buildMonitorSection();
    void buildHotkeySection();
    void buildUpdateSection();
    QWidget* buildIntervalControl();

    void showStored();
    double pollingInterval() const; // seconds

    UserDefaults& m_defaults;
    QVBoxLayout* m_sections;
    LimitField* m_itemCount = nullptr;
    LimitField* m_retentionDays = nullptr;
    QSlider* m_interval = nullptr;
    QLabel* m_intervalText = nullptr;
    ShortcutRecorder* m_recorder = nullptr;
    Shortcut m_lastShortcut;
};

} // namespace corvatto
