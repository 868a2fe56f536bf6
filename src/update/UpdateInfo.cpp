#include "update/UpdateInfo.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>

namespace corvatto {

std::optional<UpdateInfo> UpdateInfo::decode(const QByteArray& json) {
    // Anything but an object gives an empty one, which lacks the members.
    const QJsonObject object = QJsonDocument::fromJson(json).object();
    const QJsonValue latestVersion = object.value(u"latest_version");
    const QJsonValue updateLog = object.value(u"update_log");
    const QJsonValue downloadURL = object.value(u"download_url");
    if (!latestVersion.isString() || !updateLog.isString() || !downloadURL.isString()) {
        return std::nullopt;
    }
    return UpdateInfo{latestVersion.toString(), updateLog.toString(), downloadURL.toString()};
}

} // namespace corvatto
