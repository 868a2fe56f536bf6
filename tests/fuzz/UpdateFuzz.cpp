#include "Fuzz.h"
#include "update/UpdateInfo.h"
#include "update/VersionComparison.h"

using namespace corvatto;

namespace {

// No version is newer than itself, and of two versions at most one is newer.
void run(const QByteArray& input) {
    const auto info = UpdateInfo::decode(input);
    const QString first = info ? info->latestVersion : QString::fromUtf8(input.left(input.indexOf('\n')));
    const QString second = QString::fromUtf8(input.mid(input.indexOf('\n') + 1));
    fuzz::require(!isRemoteVersion(first, first));
    fuzz::require(!isRemoteVersion(first, second) || !isRemoteVersion(second, first));
}

} // namespace

fuzz::Target fuzz::update() {
    return {
        {R"({"latest_version": "1.4.0", "update_log": "a\nb 文", "download_url": "https://example.org/"})",
         R"({"latest_version": "99999999999999999999.-1.+2", "update_log": "\ud800", "download_url": ""})",
         R"({"latest_version": 1, "update_log": null, "download_url": [{}]})", "1.2.3\n1.2.4", "1..x.\n.1"},
        run};
}
