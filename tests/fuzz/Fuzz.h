// The fuzz targets: code that must hold up whatever other programs and servers give it. What they start from,
// and what once was too much, is in seeds/.
#pragma once

#include <QByteArray>

namespace corvatto::fuzz {

void desktopEntry(const QByteArray& input);
void image(const QByteArray& input);
void text(const QByteArray& input);
void update(const QByteArray& input);
void uriList(const QByteArray& input);

// Ends the program unless `holds`, as the sanitizers do: a fuzz target has nobody to tell.
inline void require(bool holds) {
    if (!holds) {
        __builtin_trap();
    }
}

} // namespace corvatto::fuzz
