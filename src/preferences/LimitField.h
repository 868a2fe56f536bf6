// A text field for a limit of the history: what is typed is stored with every change, and shown as it was
// typed.
#pragma once

#include "platform/UserDefaults.h"
#include "ui/TextField.h"

namespace corvatto {

class LimitField : public TextField {
    Q_OBJECT

public:
    // The settings and the pasteboard outlive the field.
    LimitField(UserDefaults& defaults, const Pasteboard& pasteboard, QString key, const QString& placeholder);

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
