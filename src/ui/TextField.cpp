#include "ui/TextField.h"

#include "ui/Appearance.h"
#include "ui/ContextMenu.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>

namespace corvatto {
namespace {

// What a line can sensibly be; a pasted book would only slow the field down.
constexpr qsizetype longestPaste = 4096;

} // namespace

TextField::TextField(const Pasteboard& pasteboard) : m_pasteboard(pasteboard) {
    setAcceptDrops(false); // taking a drop waits for the program that it comes from
}

void TextField::pasteSnapshot() {
    if (const auto text = m_pasteboard.string()) {
        const qsizetype room = maxLength() - this->text().size() + selectedText().size();
        QString pasted = text->left(std::min(longestPaste, room));
        if (pasted.size() < text->size() && !pasted.isEmpty() && pasted.back().isHighSurrogate()) {
            pasted.chop(1); // half a character
        }
        insert(pasted);
    }
}

void TextField::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Paste)) {
        pasteSnapshot();
    } else if (event->modifiers().testFlag(Qt::MetaModifier)) {
        commandKeyPress(*event);
    } else {
        QLineEdit::keyPressEvent(event);
        return;
    }
    event->accept();
}

void TextField::commandKeyPress(const QKeyEvent& event) {
    // Super is command here; a line edit would take Super and a letter for the letter.
    switch (event.key()) {
    case Qt::Key_V:
        pasteSnapshot();
        break;
    case Qt::Key_C:
        copy();
        break;
    case Qt::Key_X:
        cut();
        break;
    case Qt::Key_A:
        selectAll();
        break;
    case Qt::Key_Z:
        event.modifiers().testFlag(Qt::ShiftModifier) ? redo() : undo();
        break;
    default:
        break;
    }
}

void TextField::mouseReleaseEvent(QMouseEvent* event) {
    // The middle button would paste the primary selection, whose owner may hang.
    if (event->button() != Qt::MiddleButton) {
        QLineEdit::mouseReleaseEvent(event);
    }
}

void TextField::contextMenuEvent(QContextMenuEvent* event) {
    auto* menu = new ContextMenu(this);
    menu->addAction(QStringLiteral("剪切"), this, &QLineEdit::cut)->setEnabled(hasSelectedText());
    menu->addAction(QStringLiteral("复制"), this, &QLineEdit::copy)->setEnabled(hasSelectedText());
    menu->addAction(QStringLiteral("粘贴"), this, &TextField::pasteSnapshot);
    menu->addSeparator();
    menu->addAction(QStringLiteral("全选"), this, &QLineEdit::selectAll)->setEnabled(!text().isEmpty());
    menu->open(event->globalPos());
}

} // namespace corvatto
