#include "update/VersionComparison.h"

#include <QList>

#include <algorithm>

namespace corvatto {
namespace {

qint64 valueOf(QStringView component) {
    // Qt's own conversion would also take blanks around the number, and digits of other scripts.
    const QStringView digits =
        component.startsWith(u'+') || component.startsWith(u'-') ? component.sliced(1) : component;
    const bool isDecimal =
        std::all_of(digits.begin(), digits.end(), [](QChar c) { return c >= u'0' && c <= u'9'; });
    return isDecimal ? component.toLongLong() : 0; // 0 as well when it is empty or out of range
}

} // namespace

bool isRemoteVersion(QStringView remote, QStringView newerThanLocal) {
    const QList<QStringView> remotes = remote.split(u'.');
    const QList<QStringView> locals = newerThanLocal.split(u'.');
    for (qsizetype i = 0; i < std::max(remotes.size(), locals.size()); ++i) {
        const qint64 remoteValue = i < remotes.size() ? valueOf(remotes[i]) : 0;
        const qint64 localValue = i < locals.size() ? valueOf(locals[i]) : 0;
        if (remoteValue != localValue) {
            return remoteValue > localValue;
        }
    }
    return false;
}

} // namespace corvatto
