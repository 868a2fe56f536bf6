// "5 min. ago", "3 天前": distances in time in the user's language.
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
