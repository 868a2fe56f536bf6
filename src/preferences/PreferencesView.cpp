#include "preferences/PreferencesView.h"

#include "hotkey/ShortcutRecorder.h"
#include "preferences/LimitField.h"
#include "settings/SettingsKeys.h"
#include "settings/UserDefault.h"
#include "ui/Appearance.h"
#include "ui/TextLabel.h"
#include "update/UpdateChecker.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>

#include <algorithm>
#include <cmath>

namespace corvatto {
namespace {

using namespace appearance;

// Points.
constexpr int viewWidth = 680;
constexpr int labelWidth = 100;
constexpr int spaceAboveLabel = 3;
constexpr int intervalTextWidth = 60;

// The slider counts tenths of a second.
constexpr double secondsPerStep = 0.1;
constexpr int shortestStep = 1;
constexpr int longestStep = 50;

// Wraps onto as many lines as it needs, with one point between them.
QLabel* newHelp(const QString& text) {
    auto* label = new TextLabel(text, systemFont(11), secondaryLabelColor(), 1);
    label->setFixedWidth(PreferencesView::controlWidth);
    label->setWordWrap(true);
    return label;
}

// The control in the middle of a frame that is as wide as the column.
QWidget* centred(QWidget* control) {
    auto* frame = new QWidget;
    frame->setFixedWidth(PreferencesView::controlWidth);
    auto* layout = new QHBoxLayout(frame);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(control, 0, Qt::AlignCenter);
    return frame;
}

} // namespace

PreferencesView::PreferencesView(UserDefaults& defaults, const Pasteboard& pasteboard)
    : m_defaults(defaults), m_sections(new QVBoxLayout(this)), m_lastShortcut(shownShortcut(defaults)) {
    setPalette(lightPalette());
    setAutoFillBackground(true);
    setFixedWidth(viewWidth);
    m_sections->setContentsMargins(36, 26, 36, 26);
    m_sections->setSpacing(20);
    buildHistorySection(pasteboard);
    buildMonitorSection();
    buildHotkeySection();
    buildUpdateSection();
    m_sections->addStretch();

    connect(&m_defaults, &UserDefaults::didChange, this, &PreferencesView::showStored);
    showStored();
}

QVBoxLayout* PreferencesView::addSection(const QString& title, int spacing) {
    auto* section = new QVBoxLayout;
    section->setSpacing(spacing);
    section->addWidget(new TextLabel(title, systemFont(14, QFont::DemiBold), labelColor()));
    m_sections->addLayout(section);
    return section;
}

void PreferencesView::addRow(QVBoxLayout& section, const QString& label, const QString& help,
                             QWidget* control) {
    auto* name = new TextLabel(label, systemFont(13), labelColor());
    name->setFixedWidth(labelWidth);
    name->setAlignment(Qt::AlignRight | Qt::AlignTop);
    name->setContentsMargins(0, spaceAboveLabel, 0, 0);
    name->setBuddy(control);
    // As high as its label with the same space below as above, so that the two are level.
    control->setFixedHeight(name->sizeHint().height() + spaceAboveLabel);
    control->setAccessibleDescription(help);

    auto* column = new QVBoxLayout;
    column->setSpacing(5);
    column->addWidget(control);
    column->addWidget(newHelp(help));
    auto* row = new QHBoxLayout;
    row->setSpacing(14);
    row->addWidget(name, 0, Qt::AlignTop);
    row->addLayout(column);
    row->addStretch();
    section.addLayout(row);
}

void PreferencesView::buildHistorySection(const Pasteboard& pasteboard) {
    QVBoxLayout* section = addSection(QStringLiteral("历史记录"), 14);
    m_itemCount = new LimitField(m_defaults, pasteboard, SettingsKeys::maxItemCount, QStringLiteral("1000"));
    m_retentionDays =
        new LimitField(m_defaults, pasteboard, SettingsKeys::maxRetentionDays, QStringLiteral("30"));
    for (LimitField* field : {m_itemCount, m_retentionDays}) {
        field->setFont(systemFont(13));
        field->setTextMargins(3, 0, 3, 0);
        field->setFixedWidth(controlWidth);
    }
    m_itemCount->setAccessibleName(QStringLiteral("最大条数"));
    m_retentionDays->setAccessibleName(QStringLiteral("最大天数"));
    addRow(*section, QStringLiteral("最大条数"),
           QStringLiteral("设置最多保留多少条历史记录。超过该数量后，将自动清理最早的记录；"
                          "设置为 0 表示不限制保留条数。"),
           m_itemCount);
    addRow(*section, QStringLiteral("最大天数"),
           QStringLiteral("设置历史记录的保留天数。超过该天数的旧记录将被自动清理；"
                          "设置为 0 表示不限制保留时间。"),
           m_retentionDays);
}

void PreferencesView::buildMonitorSection() {
    QVBoxLayout* section = addSection(QStringLiteral("剪贴板监控"), 10);
    addRow(*section, QStringLiteral("检查间隔"),
           QStringLiteral(
               "macOS 未提供剪贴板钩子(Hook)。任何此类软件都需要通过定时读取剪贴板状态来判断是否有新内容，"
               "无法通过操作系统钩子实现。建议保持 0.5 秒。数值过大可能漏掉短时间内连续复制的内容；"
               "数值过小可能增加不必要的性能开销。"),
           buildIntervalControl());
}

QWidget* PreferencesView::buildIntervalControl() {
    auto* control = new QWidget;
    control->setFixedWidth(controlWidth);
    m_interval = new QSlider(Qt::Horizontal);
    m_interval->setRange(shortestStep, longestStep);
    m_interval->setAccessibleName(QStringLiteral("检查间隔"));
    connect(m_interval, &QSlider::valueChanged, this, [this](int step) {
        // Divided, not multiplied by 0.1, so that 3 steps give 0.3 and not 0.30000000000000004.
        m_defaults.setNumber(SettingsKeys::clipboardPollingInterval, step / 10.0);
    });
    m_intervalText = new TextLabel(QString(), monospacedSystemFont(12), secondaryLabelColor());
    m_intervalText->setFixedWidth(intervalTextWidth);
    m_intervalText->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    auto* layout = new QHBoxLayout(control);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_interval);
    layout->addWidget(m_intervalText);
    return control;
}

void PreferencesView::buildHotkeySection() {
    QVBoxLayout* section = addSection(QStringLiteral("快捷键"), 10);
    m_recorder = new ShortcutRecorder(m_defaults);
    connect(m_recorder, &ShortcutRecorder::recordedSame, this, &PreferencesView::sameShortcutRecorded);
    connect(m_recorder, &ShortcutRecorder::recordingChanged, this,
            &PreferencesView::recordingShortcutChanged);
    addRow(*section, QStringLiteral("打开历史记录"), QStringLiteral("双击修改打开历史记录窗口的快捷键。"),
           centred(m_recorder));
}

void PreferencesView::buildUpdateSection() {
    QVBoxLayout* section = addSection(QStringLiteral("更新"), 10);
    auto* button = new QPushButton(QStringLiteral("检查更新"));
    button->setFont(systemFont(13));
    button->setAutoDefault(false);
    button->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    connect(button, &QPushButton::clicked, this, [] { UpdateChecker::shared().checkForUpdates(true); });
    addRow(*section, QStringLiteral("软件更新"),
           QStringLiteral("检查是否有新版本。自动检查会在历史窗口打开一定次数后触发。"), button);
}

void PreferencesView::showTrigger(const QString& trigger) {
    m_recorder->setTrigger(trigger);
}

void PreferencesView::showEvent(QShowEvent* event) {
    // Loaded at each appearance, so that typed text that did not parse is not shown again.
    m_itemCount->load();
    m_retentionDays->load();
    QWidget::showEvent(event);
}

double PreferencesView::pollingInterval() const {
    using namespace SettingsKeys;
    return UserDefault<double>(m_defaults, clipboardPollingInterval, defaultClipboardPollingInterval)
        .wrappedValue();
}

void PreferencesView::showStored() {
    const double seconds = pollingInterval();
    m_intervalText->setText(QString::asprintf("%.1f", seconds) + QStringLiteral(" 秒"));
    {
        // Showing a value must not store it: a value outside the slider's range would be changed to the end
        // of the range.
        const QSignalBlocker blocker(m_interval);
        const double step = std::round(seconds / secondsPerStep);
        m_interval->setValue(static_cast<int>(std::clamp(step, double{shortestStep}, double{longestStep})));
    }
    if (const Shortcut shortcut = shownShortcut(m_defaults); shortcut != m_lastShortcut) {
        m_lastShortcut = shortcut;
        if (onHotkeyChanged) {
            onHotkeyChanged();
        }
    }
}

} // namespace corvatto
