// The flavours in which content is offered to other programs: the same on every display system.
#pragma once

#include "platform/ClipboardContent.h"

#include <functional>
#include <vector>

namespace corvatto {

struct OfferedFlavour {
    QByteArray target; // the name that it is asked for by
    QByteArray type;   // the name of what the answer is; nearly always the same
    // Makes the bytes; null when that cannot be done. A pure function of what it holds: any thread.
    std::function<QByteArray()> bytes;
    bool isCostly = false; // another encoding of an image, which may take a second; the others take no time
};

// The preferred ones first. Files come in the forms of all file managers, images and texts in the common
// encodings.
std::vector<OfferedFlavour> offeredFlavours(const ClipboardContent& content);

} // namespace corvatto
