#include "history/SearchField.h"

#include "ui/Appearance.h"

namespace corvatto {

SearchField::SearchField(const Pasteboard& pasteboard) : TextField(pasteboard) {
    setFrame(false);
    setFont(appearance::systemFont(appearance::bodySize));
    setAttribute(Qt::WA_MacShowFocusRect, false);
    QPalette plain = appearance::lightPalette();
    plain.setColor(QPalette::Base, Qt::transparent);
    plain.setColor(QPalette::PlaceholderText, Qt::transparent); // drawn by the text field
    setPalette(plain);
}

} // namespace corvatto
