// The control that shows the global shortcut and records a new one: a click makes it wait for the next key,
// which, with the modifiers held, becomes the shortcut. It registers nothing itself.
#pragma once

#include "platform/KeyEvent.h"

#include <QTimer>
#include <QWidget>

#include <functional>

namespace corvatto {

// Main thread.
class ShortcutRecorderView : public QWidget {
    Q_OBJECT

public:
    explicit ShortcutRecorderView(QWidget* parent = nullptr);

    // Told about every recorded combination. May be unset.
    std::function<void(qint64 keyCode, qint64 modifiers)> onShortcutChanged;

    qint64 keyCode() const { return m_keyCode; }
    qint64 modifiers() const { return m_modifiers; } // a mask of HotKeyModifier
    bool isRecording() const { return m_isRecording; }

    // Shows another shortcut without telling anybody.
    void setShortcut(qint64 keyCode, qint64 modifiers);

    // Shows the desktop's words for what triggers the shortcut; empty shows the shortcut itself.
    void setTrigger(const QString& trigger);

    QSize sizeHint() const override;

Q_SIGNALS:
    void recordingChanged(bool isRecording);

protected:
    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void setRecording(bool isRecording);
    void startRecording();
    void cancelRecording();
    void finishRecording(qint64 keyCode, qint64 modifiers);
    void leaveRecording();
    void describe();
    QString shortcutText() const;

    qint64 m_keyCode;
    qint64 m_modifiers;
    QString m_trigger;
    bool m_isRecording = false;
    QTimer m_cancelTimer;
};

// The mask of HotKeyModifier for the modifier flags of an event. Other flags are dropped.
qint64 carbonModifiers(quint64 modifierFlags);

} // namespace corvatto
