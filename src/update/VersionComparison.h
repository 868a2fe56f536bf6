// Which of two versions is the newer.
#pragma once

#include <QStringView>

namespace corvatto {

// Whether `remote` is newer than `local`. Both are split at every dot and compared number by number; a
// component that is missing or is no 64-bit decimal integer (with at most one sign) counts as 0. So 1.10 is
// newer than 1.9, 1.2 and 1.2.0 are the same, and 1.3-beta is 1.0.
bool isRemoteVersion(QStringView remote, QStringView newerThanLocal);

} // namespace corvatto
