// What every fuzz target has beside its LLVMFuzzerTestOneInput().
#pragma once

#include <QByteArray>
#include <QList>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace corvatto::fuzz {

// Well-formed inputs to start from, and those that once were too much.
QList<QByteArray> seeds();

// Ends the program unless `holds`, as the sanitizers do: a fuzz target has nobody to tell.
inline void require(bool holds) {
    if (!holds) {
        __builtin_trap();
    }
}

inline QByteArray bytesOf(const std::uint8_t* data, std::size_t size) {
    return QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
}

} // namespace corvatto::fuzz
