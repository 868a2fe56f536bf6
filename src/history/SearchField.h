// The search field: a plain line edit that never waits for the clipboard's owner.
//
// A line edit of Qt's own asks the owner when it pastes, and even when it opens its context menu, and a
// program that hangs would freeze the panel with it. This one pastes the text that the program has collected
// already.
#pragma once

#include "platform/Pasteboard.h"

#include <QLineEdit>

namespace corvatto {

class SearchField : public QLineEdit {
    Q_OBJECT

public:
    // The pasteboard outlives the field.
    explicit SearchField(Pasteboard& pasteboard);

    // True while an input method composes text, when all keys are its own.
    bool isComposing() const { return m_isComposing; }

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void pasteSnapshot();
    void commandKeyPress(const QKeyEvent& event);

    Pasteboard& m_pasteboard;
    bool m_isComposing = false;
};

} // namespace corvatto
