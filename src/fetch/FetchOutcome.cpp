#include "fetch/FetchOutcome.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace corvatto {
namespace {

const QString statusKey = QStringLiteral("status");
const QString domainKey = QStringLiteral("domain");
const QString codeKey = QStringLiteral("code");
const QString descriptionKey = QStringLiteral("description");

QByteArray line(const QJsonObject& object) {
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

} // namespace

QByteArray encoded(const FetchOutcome& outcome) {
    if (const auto* response = std::get_if<FetchResponse>(&outcome)) {
        return line({{statusKey, response->status}}) + response->body;
    }
    const auto& error = std::get<FetchError>(outcome);
    return line({{domainKey, error.domain}, {codeKey, error.code}, {descriptionKey, error.description}});
}

std::optional<FetchOutcome> decodedOutcome(const QByteArray& bytes) {
    const qsizetype end = bytes.indexOf('\n');
    const QJsonObject object = QJsonDocument::fromJson(bytes.left(end)).object();
    if (end < 0 || object.isEmpty()) {
        return std::nullopt;
    }
    if (const QJsonValue status = object[statusKey]; status.isDouble()) {
        return FetchResponse{status.toInt(), bytes.mid(end + 1)};
    }
    const QString description = object[descriptionKey].toString();
    if (description.isEmpty()) {
        return std::nullopt;
    }
    return FetchError{object[domainKey].toString(), object[codeKey].toInt(FetchError::unknown), description};
}

} // namespace corvatto
