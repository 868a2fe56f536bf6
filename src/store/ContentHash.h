// SHA-256 as text: the identity of everything in the history. Copies with equal hashes are one entry.
#pragma once

#include <QByteArrayView>
#include <QString>
#include <QStringView>

namespace corvatto {

// Both return 64 lower-case hexadecimal digits, in the order of the digest's bytes. Pure functions, any
// thread.

// Of the text's UTF-8 bytes, without a terminator. The text is not normalized: two spellings of a letter
// differ.
QString sha256(QStringView text);

// Of the bytes. Takes about a millisecond per megabyte.
QString sha256Hex(QByteArrayView bytes);

} // namespace corvatto
