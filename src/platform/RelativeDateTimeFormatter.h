// Relative times in the user's language, such as "5 min. ago" or "3 天前".
#pragma once

#include <QDateTime>
#include <QString>

namespace corvatto {

class RelativeDateTimeFormatter {
public:
    RelativeDateTimeFormatter() = default;
    virtual ~RelativeDateTimeFormatter() = default;
    RelativeDateTimeFormatter(const RelativeDateTimeFormatter&) = delete;
    RelativeDateTimeFormatter& operator=(const RelativeDateTimeFormatter&) = delete;

    // `time` as seen from `reference`, abbreviated, always as a number of the largest whole unit.
    virtual QString localizedString(const QDateTime& time, const QDateTime& reference) const = 0;
};

} // namespace corvatto
