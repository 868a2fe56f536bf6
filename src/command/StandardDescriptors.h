// The descriptors that every process begins with: standard input, output and error.
#pragma once

namespace corvatto {

// Opens /dev/null in place of each standard descriptor that is closed. Otherwise the next file or socket that
// is opened takes its number, and lines go into that. To be called before anything is opened.
void openClosedStandardDescriptors();

} // namespace corvatto
