// The only way in which the program reports that something went wrong: a line on standard output, flushed at
// once.
#pragma once

#include <QStringView>

namespace corvatto {

// Writes `line` and a line feed to standard output as UTF-8 and flushes. Failures are ignored. A line may
// hold paths and error texts, but never what the user has copied. Main thread.
void printLine(QStringView line);

} // namespace corvatto
