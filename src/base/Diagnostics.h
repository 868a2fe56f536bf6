// The one way to say that something went wrong: a line on standard output, flushed at once.
#pragma once

#include <QStringView>

namespace corvatto {

// Writes `line` and a line feed to standard output as UTF-8 and flushes. Never fails outward. History content
// never belongs into a line: paths and error texts do, what the user copied does not. Main thread.
void printLine(QStringView line);

} // namespace corvatto
