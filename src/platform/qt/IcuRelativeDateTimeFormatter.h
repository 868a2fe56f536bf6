// Relative times in the words of ICU's locale data.
#pragma once

#include "platform/RelativeDateTimeFormatter.h"

#include <memory>

namespace corvatto {

class IcuRelativeDateTimeFormatter : public RelativeDateTimeFormatter {
public:
    // `locale` is a BCP 47 tag such as "zh-CN".
    explicit IcuRelativeDateTimeFormatter(const QString& locale);
    ~IcuRelativeDateTimeFormatter() override;

    QString localizedString(const QDateTime& time, const QDateTime& reference) const override;

private:
    struct Formatter;
    std::unique_ptr<Formatter> m_formatter;
};

} // namespace corvatto
