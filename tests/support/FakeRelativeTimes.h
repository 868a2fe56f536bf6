// Relative times as a number of seconds, in no language.
#pragma once

#include "platform/RelativeDateTimeFormatter.h"

namespace corvatto::test {

class FakeRelativeTimes : public RelativeDateTimeFormatter {
public:
    QString localizedString(const QDateTime& time, const QDateTime& reference) const override {
        return QStringLiteral("%1 s").arg(reference.secsTo(time));
    }
};

} // namespace corvatto::test
