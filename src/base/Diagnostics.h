// The only way in which the program reports that something went wrong: a line on standard output. Whoever
// reads the output may be slow, stopped or gone; the program never waits for that.
#pragma once

#include <QStringView>

namespace corvatto {

// Writes `line` and a line feed to standard output as UTF-8. What cannot be written at once is dropped, and
// failures are ignored. A line may hold paths and error texts, but never what the user has copied. Any
// thread.
void printLine(QStringView line);

// Has Qt's own messages written to standard error in the same way.
void printQtMessagesWithoutWaiting();

} // namespace corvatto
