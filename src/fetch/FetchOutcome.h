// What fetching a document came to, and how the helper that fetches tells the program.
#pragma once

#include "fetch/FetchError.h"

#include <QByteArray>

#include <optional>
#include <variant>

namespace corvatto {

struct FetchResponse {
    int status = 0; // HTTP's
    QByteArray body;
};

using FetchOutcome = std::variant<FetchResponse, FetchError>;

// One line of JSON, and the body after it.
QByteArray encoded(const FetchOutcome& outcome);

// The longest line that encoded() writes.
inline constexpr qint64 longestOutcomeLine = 4096;

// Absent unless `bytes` are what encoded() wrote.
std::optional<FetchOutcome> decodedOutcome(const QByteArray& bytes);

} // namespace corvatto
