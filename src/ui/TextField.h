// A line edit that never waits for the clipboard's owner.
//
// One of Qt's own asks the owner when it pastes, and even when it opens its context menu, and a program that
// hangs would freeze this one with it. This one pastes the text that the program has collected already.
#pragma once

#include "platform/Pasteboard.h"

#include <QLineEdit>

namespace corvatto {

class TextField : public QLineEdit {
    Q_OBJECT

public:
    // The pasteboard outlives the field.
    explicit TextField(const Pasteboard& pasteboard);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    void pasteSnapshot();
    void commandKeyPress(const QKeyEvent& event);

    const Pasteboard& m_pasteboard;
};

} // namespace corvatto
