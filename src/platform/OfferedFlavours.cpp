#include "platform/OfferedFlavours.h"

#include "base/Worker.h"

#include <chrono>
#include <utility>

namespace corvatto {
namespace {

// Encodings are asked for in quick succession, by a program that pastes and by those that watch the
// clipboard.
constexpr std::chrono::seconds encodingLifetime{10};

} // namespace

OfferedFlavours::OfferedFlavours(QObject& context, const ClipboardContent& content) : m_context(context) {
    for (OfferedFlavour& offered : offeredFlavours(content)) {
        m_flavours.push_back({std::move(offered), {}, {}});
    }
    m_forgetEncodings.setSingleShot(true);
    m_forgetEncodings.setInterval(encodingLifetime);
    m_forgetEncodings.callOnTimeout([this] {
        for (Flavour& flavour : m_flavours) {
            flavour.encoding = QByteArray();
        }
    });
}

void OfferedFlavours::bytesOf(std::size_t index, const Ready& ready) {
    Flavour& flavour = m_flavours[index];
    if (!flavour.offered.isCostly) {
        ready(flavour.offered.bytes());
        return;
    }
    if (!flavour.encoding.isNull()) {
        m_forgetEncodings.start();
        ready(flavour.encoding);
        return;
    }
    flavour.waiting.push_back(ready);
    if (flavour.waiting.size() > 1) {
        return; // it is being made
    }
    runOnWorker(m_context, flavour.offered.bytes,
                [self = shared_from_this(), index](const QByteArray& bytes) { self->encoded(index, bytes); });
}

void OfferedFlavours::encoded(std::size_t index, const QByteArray& bytes) {
    m_flavours[index].encoding = bytes;
    m_forgetEncodings.start();
    for (const Ready& ready : std::exchange(m_flavours[index].waiting, {})) {
        ready(bytes);
    }
}

} // namespace corvatto
