// Where the product lives on the net: the only place that spells its addresses out.
#pragma once

#include <QString>

namespace corvatto::ProductAddresses {

// The document that names the newest version. HTTPS, and nothing else will be fetched.
inline const QString updateDocument = QStringLiteral("https://corvatto.app/update.json");

inline const QString website = QStringLiteral("https://corvatto.app");

// An e-mail address.
inline const QString feedback = QStringLiteral("feedback@corvatto.app");

} // namespace corvatto::ProductAddresses
