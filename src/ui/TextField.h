// A line edit that never waits for the clipboard's owner.
//
// QLineEdit asks the owner when it pastes, and even when it opens its context menu; an owner that hangs would
// freeze this program. This field pastes the text that the program has already collected.
//
// Its text and its placeholder stand on one baseline, whatever fonts their characters come from.
#pragma once

#include "platform/Pasteboard.h"

#include <QLineEdit>

namespace corvatto {

class TextField : public QLineEdit {
    Q_OBJECT

public:
    // The pasteboard outlives the field.
    explicit TextField(const Pasteboard& pasteboard);

    // True while an input method composes text, when all keys are its own.
    bool isComposing() const { return m_isComposing; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    void pasteSnapshot();
    void commandKeyPress(const QKeyEvent& event);

    void placeText();
    QRect textRect() const;

    const Pasteboard& m_pasteboard;
    bool m_isComposing = false;
};

} // namespace corvatto
