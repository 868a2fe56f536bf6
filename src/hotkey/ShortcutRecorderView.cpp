#include "hotkey/ShortcutRecorderView.h"

#include "hotkey/ShortcutNames.h"
#include "platform/HotKeyCenter.h"
#include "settings/SettingsKeys.h"
#include "ui/Appearance.h"
#include "ui/TextLine.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <chrono>

namespace corvatto {
namespace {

using namespace appearance;

constexpr QSize intrinsicSize(140, 22); // points
constexpr int textMargin = 4;           // points
constexpr std::chrono::seconds recordingTimeout{5};

// Keys that are modifiers on their own: command, shift, caps lock, option, control, function and the
// right-hand ones.
constexpr quint16 firstModifierKey = 54;
constexpr quint16 lastModifierKey = 63;

// Whether the keyboard moves to another window or a menu, or comes back, while the control stays the one that
// has the focus in its window.
bool keepsFocusWidget(const QFocusEvent& event) {
    return event.reason() == Qt::ActiveWindowFocusReason || event.reason() == Qt::PopupFocusReason;
}

} // namespace

qint64 carbonModifiers(quint64 modifierFlags) {
    qint64 modifiers = 0;
    modifiers += (modifierFlags & shiftFlag) != 0 ? qint64{shiftKey} : 0;
    modifiers += (modifierFlags & controlFlag) != 0 ? qint64{controlKey} : 0;
    modifiers += (modifierFlags & optionFlag) != 0 ? qint64{optionKey} : 0;
    modifiers += (modifierFlags & commandFlag) != 0 ? qint64{commandKey} : 0;
    return modifiers;
}

ShortcutRecorderView::ShortcutRecorderView(QWidget* parent)
    : QWidget(parent), m_keyCode(SettingsKeys::defaultHotkeyKeyCode),
      m_modifiers(SettingsKeys::defaultHotkeyModifiers) {
    setFixedSize(intrinsicSize);
    setFocusPolicy(Qt::TabFocus); // a click starts and stops recording by itself
    m_cancelTimer.setSingleShot(true);
    m_cancelTimer.setTimerType(Qt::PreciseTimer);
    m_cancelTimer.setInterval(recordingTimeout);
    m_cancelTimer.callOnTimeout([this] { cancelRecording(); });
    describe();
}

QSize ShortcutRecorderView::sizeHint() const {
    return intrinsicSize;
}

void ShortcutRecorderView::setShortcut(qint64 keyCode, qint64 modifiers) {
    m_keyCode = keyCode;
    m_modifiers = modifiers;
    describe();
    update();
}

void ShortcutRecorderView::setTrigger(const QString& trigger) {
    m_trigger = trigger;
    describe();
    update();
}

QString ShortcutRecorderView::shortcutText() const {
    return m_trigger.isEmpty() ? shortcutString(m_keyCode, m_modifiers) : m_trigger;
}

void ShortcutRecorderView::describe() {
    setAccessibleName(shortcutText());
}

void ShortcutRecorderView::setRecording(bool isRecording) {
    if (m_isRecording != isRecording) {
        m_isRecording = isRecording;
        update();
        Q_EMIT recordingChanged(isRecording);
    }
}

void ShortcutRecorderView::startRecording() {
    setRecording(true);
    setFocus();
    m_cancelTimer.start();
}

void ShortcutRecorderView::leaveRecording() {
    setRecording(false);
    m_cancelTimer.stop();
    clearFocus();
}

void ShortcutRecorderView::cancelRecording() {
    leaveRecording();
}

void ShortcutRecorderView::finishRecording(qint64 keyCode, qint64 modifiers) {
    setShortcut(keyCode, modifiers);
    leaveRecording();
    if (onShortcutChanged) {
        onShortcutChanged(keyCode, modifiers);
    }
}

void ShortcutRecorderView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        return;
    }
    if (m_isRecording) {
        cancelRecording();
    } else {
        startRecording();
    }
}

void ShortcutRecorderView::mouseDoubleClickEvent(QMouseEvent* event) {
    mousePressEvent(event); // the second click of two quick ones
}

void ShortcutRecorderView::focusInEvent(QFocusEvent* event) {
    if (!keepsFocusWidget(*event)) {
        setRecording(true);
    }
}

void ShortcutRecorderView::focusOutEvent(QFocusEvent* event) {
    if (m_isRecording && !keepsFocusWidget(*event)) {
        cancelRecording();
    }
}

void ShortcutRecorderView::hideEvent(QHideEvent* event) {
    // The focus stays with the control while its window is closed.
    if (m_isRecording && !event->spontaneous()) {
        cancelRecording();
    }
}

bool ShortcutRecorderView::event(QEvent* event) {
    // While recording, every key is ours: Tab would move the focus, and others would trigger shortcuts.
    if (m_isRecording && (event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride)) {
        if (event->type() == QEvent::KeyPress) {
            keyPressEvent(static_cast<QKeyEvent*>(event));
        }
        event->accept();
        return true;
    }
    return QWidget::event(event);
}

void ShortcutRecorderView::keyPressEvent(QKeyEvent* event) {
    if (!m_isRecording) {
        QWidget::keyPressEvent(event);
        return;
    }
    const KeyEvent key = hotKeyEventFrom(*event);
    if (event->isAutoRepeat() || (key.keyCode >= firstModifierKey && key.keyCode <= lastModifierKey) ||
        key.keyCode == keyUnknown) {
        return; // a modifier by itself, or a key without a code
    }
    finishRecording(key.keyCode, carbonModifiers(key.modifierFlags));
}

void ShortcutRecorderView::paintEvent(QPaintEvent* /*event*/) {
    const QColor red = systemRed();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF border = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.fillRect(rect(), m_isRecording ? faded(red, 0.08) : controlBackgroundColor());
    painter.setPen(QPen(m_isRecording ? red : tertiaryLabelColor(), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(border, 6, 6);

    const QFont font = systemFont(12);
    painter.setFont(font);
    painter.setPen(m_isRecording ? red : labelColor());
    const QString text = m_isRecording ? QStringLiteral("Recording...") : shortcutText();
    // Desktops may use many words.
    const QString fitting = QFontMetrics(font).elidedText(text, Qt::ElideRight, width() - 2 * textMargin);
    textline::draw(painter, rect(), fitting, Qt::AlignHCenter);
}

} // namespace corvatto
