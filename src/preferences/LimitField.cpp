#include "preferences/LimitField.h"

#include "settings/UserDefault.h"

#include <QRegularExpression>

#include <algorithm>

namespace corvatto {

LimitField::LimitField(UserDefaults& defaults, const Pasteboard& pasteboard, QString key,
                       const QString& placeholder)
    : TextField(pasteboard), m_defaults(defaults), m_key(std::move(key)) {
    setPlaceholderText(placeholder);
    connect(this, &QLineEdit::textChanged, this,
            [this](const QString& text) { m_defaults.setInteger(m_key, limitFrom(text)); });
}

void LimitField::load() {
    const qint64 stored = UserDefault<qint64>(m_defaults, m_key, 0).wrappedValue();
    setText(stored == 0 ? QString() : QString::number(stored));
}

qint64 LimitField::limitFrom(const QString& text) {
    // The number reader alone would also take spaces around the digits, and digits of other scripts.
    static const QRegularExpression number(QStringLiteral("\\A[+-]?[0-9]+\\z"));
    if (!number.match(text).hasMatch()) {
        return 0;
    }
    bool isInRange = false;
    const qint64 value = text.toLongLong(&isInRange, 10);
    return isInRange ? std::max(value, qint64{0}) : 0;
}

} // namespace corvatto
