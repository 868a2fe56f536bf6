// The flavours of one offer to other programs, with the bytes that they are asked for.
//
// Whoever asks for another encoding of an image waits for it, and nobody else does: it is made beside the
// main thread, once for all who ask, and kept for a while.
#pragma once

#include "platform/ClipboardOffer.h"

#include <QTimer>

namespace corvatto {

// Main thread. Shared by the current offer and by those who wait for an encoding when the offer has ended.
class OfferedFlavours : public std::enable_shared_from_this<OfferedFlavours> {
public:
    // Nobody is answered any more once `context` has gone.
    OfferedFlavours(QObject& context, const ClipboardContent& content);

    std::size_t size() const { return m_flavours.size(); }
    const OfferedFlavour& operator[](std::size_t index) const { return m_flavours[index].offered; }

    // Calls `ready` with the bytes of a flavour, or with null when they cannot be made; at once unless they
    // have to be encoded.
    using Ready = std::function<void(const QByteArray& bytes)>;
    void bytesOf(std::size_t index, const Ready& ready);

private:
    struct Flavour {
        OfferedFlavour offered;
        QByteArray encoding;        // of a costly flavour, while it is kept
        std::vector<Ready> waiting; // for the encoding that is being made
    };
    void encoded(std::size_t index, const QByteArray& bytes);

    QObject& m_context;
    std::vector<Flavour> m_flavours;
    QTimer m_forgetEncodings;
};

} // namespace corvatto
