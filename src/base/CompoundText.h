// Decoding of COMPOUND_TEXT, the encoding of international text in X programs older than UTF-8: ISO 2022 with
// a fixed choice of character sets, in 8-bit segments that escape sequences introduce.
#pragma once

#include "base/TextDecoding.h"

#include <QByteArrayView>

namespace corvatto {

// Segments in an unknown character set are marked as invalid bytes and replaced. Any thread.
DecodedText decodeCompoundText(QByteArrayView bytes);

} // namespace corvatto
