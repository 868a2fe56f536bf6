// Decoding of the text flavours that X programs offer.
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace corvatto {

// How good a text flavour is: 0 is the best, and an absent rank means that the target name is not a text
// flavour that can be decoded. Known are text/plain with any charset that the system's converters know, and
// UTF8_STRING, text/plain, COMPOUND_TEXT, TEXT, STRING and C_STRING.
std::optional<int> textFlavourRank(const QByteArray& target);

struct DecodedText {
    QString text;
    bool hadInvalidBytes = false; // each invalid sequence became U+FFFD
};

// Decodes the bytes of a flavour that has a rank. A NUL is a character like any other.
DecodedText decodeText(const QByteArray& target, const QByteArray& bytes);

// The beginning of `utf8`, at most `length` bytes and no part of a character.
QByteArrayView utf8Prefix(QByteArrayView utf8, qsizetype length);

} // namespace corvatto
