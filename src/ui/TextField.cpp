#include "ui/TextField.h"

#include "ui/Appearance.h"
#include "ui/ContextMenu.h"
#include "ui/TextLine.h"

#include <QContextMenuEvent>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionFrame>

#include <algorithm>

namespace corvatto {
namespace {

// UTF-16 units. What is pasted beyond them is cut, because a very long line slows the field down.
constexpr qsizetype longestPaste = 4096;

} // namespace

TextField::TextField(const Pasteboard& pasteboard) : m_pasteboard(pasteboard) {
    setAcceptDrops(false); // taking a drop waits for the program that it comes from
    // The text stands at the top of an area that begins where its baseline wants it; in the middle, it would
    // move with the height of the fonts that its characters come from.
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    QPalette withoutPlaceholder;
    withoutPlaceholder.setColor(QPalette::PlaceholderText, Qt::transparent); // it is drawn here
    setPalette(withoutPlaceholder);
}

QRect TextField::textRect() const {
    QStyleOptionFrame option;
    initStyleOption(&option);
    return style()->subElementRect(QStyle::SE_LineEditContents, &option, this);
}

void TextField::placeText() {
    constexpr int marginOfLineEdit = 1; // above its text, within its margins
    const QRect area = textRect();
    const int baseline = qRound(textline::baseline(area, font()));
    QMargins margins = textMargins();
    margins.setTop(baseline - QFontMetrics(font()).ascent() - marginOfLineEdit - area.top());
    if (margins != textMargins()) {
        setTextMargins(margins);
    }
}

QSize TextField::sizeHint() const {
    return QLineEdit::sizeHint() - QSize(0, textMargins().top());
}

QSize TextField::minimumSizeHint() const {
    return QLineEdit::minimumSizeHint() - QSize(0, textMargins().top());
}

void TextField::resizeEvent(QResizeEvent* event) {
    QLineEdit::resizeEvent(event);
    placeText();
}

void TextField::paintEvent(QPaintEvent* event) {
    QLineEdit::paintEvent(event);
    if (text().isEmpty() && !m_isComposing) {
        constexpr int marginOfLineEdit = 2; // before its text, within its margins
        const QRect area = textRect();
        const int left = area.left() + textMargins().left() + marginOfLineEdit;
        QPainter painter(this);
        painter.setPen(appearance::lightPalette().color(QPalette::PlaceholderText));
        textline::drawOnBaseline(painter, area.adjusted(left - area.left(), 0, 0, 0),
                                 qRound(textline::baseline(area, font())), placeholderText());
    }
}

void TextField::inputMethodEvent(QInputMethodEvent* event) {
    m_isComposing = !event->preeditString().isEmpty();
    QLineEdit::inputMethodEvent(event);
}

void TextField::focusOutEvent(QFocusEvent* event) {
    m_isComposing = false;
    QLineEdit::focusOutEvent(event);
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
