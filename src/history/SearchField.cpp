#include "history/SearchField.h"

#include "ui/Appearance.h"

#include <QInputMethodEvent>

namespace corvatto {

SearchField::SearchField(const Pasteboard& pasteboard) : TextField(pasteboard) {
    setFrame(false);
    setFont(appearance::systemFont(appearance::bodySize));
    setAttribute(Qt::WA_MacShowFocusRect, false);
    QPalette plain = appearance::lightPalette();
    plain.setColor(QPalette::Base, Qt::transparent);
    setPalette(plain);
}

void SearchField::inputMethodEvent(QInputMethodEvent* event) {
    m_isComposing = !event->preeditString().isEmpty();
    QLineEdit::inputMethodEvent(event);
}

void SearchField::focusOutEvent(QFocusEvent* event) {
    m_isComposing = false;
    QLineEdit::focusOutEvent(event);
}

} // namespace corvatto
