#include "Fuzz.h"
#include "update/UpdateInfo.h"
#include "update/VersionComparison.h"

using namespace corvatto;

// No version is newer than itself, and of two versions at most one is newer.
void fuzz::update(const QByteArray& input) {
    const auto info = UpdateInfo::decode(input);
    const QString first = info ? info->latestVersion : QString::fromUtf8(input.left(input.indexOf('\n')));
    const QString second = QString::fromUtf8(input.mid(input.indexOf('\n') + 1));
    fuzz::require(!isRemoteVersion(first, first));
    fuzz::require(!isRemoteVersion(first, second) || !isRemoteVersion(second, first));
}
