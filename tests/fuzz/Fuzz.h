// The fuzz targets: code that must hold up whatever other programs and servers give it.
#pragma once

#include <QByteArray>
#include <QList>

namespace corvatto::fuzz {

struct Target {
    QList<QByteArray> seeds; // well-formed inputs to start from, and those that once were too much
    void (*run)(const QByteArray& input);
};
Target desktopEntry();
Target image();
Target text();
Target update();
Target uriList();

// Ends the program unless `holds`, as the sanitizers do: a fuzz target has nobody to tell.
inline void require(bool holds) {
    if (!holds) {
        __builtin_trap();
    }
}

} // namespace corvatto::fuzz
