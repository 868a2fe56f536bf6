// Replaces a connection's `like` function by one with the same results that searches at the speed of memory.
// Private to this room.
#pragma once

struct sqlite3;

namespace corvatto {

// For LIKE without ESCAPE. When the connection refuses, it keeps its own function.
void installLikeFunction(sqlite3* db);

} // namespace corvatto
