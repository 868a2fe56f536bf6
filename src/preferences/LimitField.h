// A text field for a limit of the history: what is typed is stored with every change, and shown as it was
// typed.
#pragma once

#include "platform/UserDefaults.h"

#include <QLineEdit>

namespace corvatto {

class LimitField : public QLineEdit {
    Q_OBJECT

public:
    // The settings outlive the field.
    LimitField(UserDefaults& defaults, QString key, const QString& placeholder);

    // Shows the stored limit; nothing for 0, which is no limit.
    void load();

    // The number that a text stands for: an optional sign and decimal digits, within 64 bits. 0 for any other
    // text, and for a negative number.
    static qint64 limitFrom(const QString& text);

private:
    UserDefaults& m_defaults;
    QString m_key;
};

} // namespace corvatto
