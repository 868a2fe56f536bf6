#include "LikeFunction.h"

#include "LikePattern.h"

#include <memory>
#include <string_view>

#include <sqlite3.h>

namespace corvatto {
namespace {

// The value as UTF-8. sqlite3_value_bytes() converts it if need be; sqlite3_value_blob(), unlike
// sqlite3_value_text(), then makes no copy to add a NUL.
std::string_view utf8(sqlite3_value* value) {
    const auto size = static_cast<std::size_t>(sqlite3_value_bytes(value));
    return {static_cast<const char*>(sqlite3_value_blob(value)), size};
}

bool blobsNeverMatch() {
    static const bool never = sqlite3_compileoption_used("LIKE_DOESNT_MATCH_BLOBS") != 0;
    return never;
}

// X LIKE Y is like(Y, X).
void like(sqlite3_context* context, int /*count*/, sqlite3_value** values) {
    sqlite3_value* const pattern = values[0];
    sqlite3_value* const text = values[1];
    const int patternType = sqlite3_value_type(pattern), textType = sqlite3_value_type(text);
    if (blobsNeverMatch() && (patternType == SQLITE_BLOB || textType == SQLITE_BLOB)) {
        sqlite3_result_int(context, 0);
        return;
    }
    // A pattern that is constant in a statement is parsed once; SQLite keeps the result.
    const auto* parsed = static_cast<const LikePattern*>(sqlite3_get_auxdata(context, 0));
    if (parsed != nullptr && textType != SQLITE_NULL) {
        sqlite3_result_int(context, parsed->matches(utf8(text)) ? 1 : 0);
        return;
    }
    const int limit = sqlite3_limit(sqlite3_context_db_handle(context), SQLITE_LIMIT_LIKE_PATTERN_LENGTH, -1);
    if (sqlite3_value_bytes(pattern) > limit) {
        sqlite3_result_error(context, "LIKE or GLOB pattern too complex", -1);
        return;
    }
    if (patternType == SQLITE_NULL || textType == SQLITE_NULL) {
        return; // the result is NULL
    }
    auto fresh = std::make_unique<const LikePattern>(utf8(pattern));
    sqlite3_result_int(context, fresh->matches(utf8(text)) ? 1 : 0);
    // SQLite may delete the pattern before this returns.
    sqlite3_set_auxdata(context, 0, const_cast<LikePattern*>(fresh.release()),
                        [](void* kept) { delete static_cast<const LikePattern*>(kept); });
}

} // namespace

void installLikeFunction(sqlite3* db) {
    sqlite3_create_function(db, "like", 2, SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS, nullptr,
                            like, nullptr, nullptr);
}

} // namespace corvatto
