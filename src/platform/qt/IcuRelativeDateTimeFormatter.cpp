#include "platform/qt/IcuRelativeDateTimeFormatter.h"

#include <unicode/reldatefmt.h>
#include <unicode/unistr.h>

namespace corvatto {
namespace {

struct Distance {
    qint64 amount; // of whole units, never negative
    URelativeDateTimeUnit unit;
};

qint64 wholeMonths(const QDateTime& from, const QDateTime& to) {
    const QDate first = from.date();
    const QDate last = to.date();
    qint64 months = (last.year() - first.year()) * 12 + last.month() - first.month();
    if (months > 0 && from.addMonths(static_cast<int>(months)) > to) {
        --months;
    }
    return months;
}

// The largest unit that fits at least once. Months and years are those of the calendar.
Distance distance(const QDateTime& from, const QDateTime& to) {
    constexpr qint64 minute = 60;
    constexpr qint64 hour = 60 * minute;
    constexpr qint64 day = 24 * hour;
    constexpr qint64 week = 7 * day;
    const qint64 seconds = from.secsTo(to);
    if (const qint64 months = wholeMonths(from, to); months >= 12) {
        return {months / 12, UDAT_REL_UNIT_YEAR};
    } else if (months >= 1) {
        return {months, UDAT_REL_UNIT_MONTH};
    }
    if (seconds >= week) {
        return {seconds / week, UDAT_REL_UNIT_WEEK};
    }
    if (seconds >= day) {
        return {seconds / day, UDAT_REL_UNIT_DAY};
    }
    if (seconds >= hour) {
        return {seconds / hour, UDAT_REL_UNIT_HOUR};
    }
    if (seconds >= minute) {
        return {seconds / minute, UDAT_REL_UNIT_MINUTE};
    }
    return {seconds, UDAT_REL_UNIT_SECOND};
}

// Falls back to English for an invalid tag, so that there are always times to show.
icu::Locale localeFor(const QString& tag) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Locale locale = icu::Locale::forLanguageTag(tag.toStdString(), status);
    return U_SUCCESS(status) && !locale.isBogus() ? locale : icu::Locale::getEnglish();
}

} // namespace

struct IcuRelativeDateTimeFormatter::Formatter {
    UErrorCode status = U_ZERO_ERROR;
    icu::RelativeDateTimeFormatter words;

    explicit Formatter(const QString& locale)
        : words(localeFor(locale), nullptr, UDAT_STYLE_SHORT, UDISPCTX_CAPITALIZATION_NONE, status) {}
};

IcuRelativeDateTimeFormatter::IcuRelativeDateTimeFormatter(const QString& locale)
    : m_formatter(std::make_unique<Formatter>(locale)) {}

IcuRelativeDateTimeFormatter::~IcuRelativeDateTimeFormatter() = default;

QString IcuRelativeDateTimeFormatter::localizedString(const QDateTime& time,
                                                      const QDateTime& reference) const {
    // Months are counted on the calendar of the reference, so both times are converted to its zone.
    const QDateTime now = reference.toOffsetFromUtc(reference.offsetFromUtc());
    const QDateTime then = time.toOffsetFromUtc(reference.offsetFromUtc());
    const bool isFuture = then > now;
    const Distance away = isFuture ? distance(now, then) : distance(then, now);
    // The sign gives the direction; negative zero is "0 seconds ago".
    const double amount = isFuture ? static_cast<double>(away.amount) : -static_cast<double>(away.amount);
    UErrorCode status = m_formatter->status;
    icu::UnicodeString text;
    m_formatter->words.formatNumeric(amount, away.unit, text, status);
    if (U_FAILURE(status)) {
        return {};
    }
    return QString::fromUtf16(text.getBuffer(), text.length());
}

} // namespace corvatto
