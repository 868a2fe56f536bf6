// What the maker's update document says about the newest version.
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace corvatto {

struct UpdateInfo {
    QString latestVersion; // dot-separated numbers, such as 1.4.0; not checked
    QString updateLog;     // release notes, may contain line breaks
    QString downloadURL;   // whatever the document says: not necessarily an address

    // From a JSON object with the string members latest_version, update_log and download_url; others are
    // ignored. Absent when `json` is anything else.
    static std::optional<UpdateInfo> decode(const QByteArray& json);
};

} // namespace corvatto
