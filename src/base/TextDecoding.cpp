#include "base/TextDecoding.h"

#include "base/CompoundText.h"

#include <QHash>
#include <QStringDecoder>

#include <algorithm>

namespace corvatto {
namespace {

constexpr char charsetPrefix[] = "text/plain;charset=";

std::optional<QByteArray> charsetOf(const QByteArray& target) {
    QByteArray name = target.toLower();
    name.replace(' ', "");
    if (!name.startsWith(charsetPrefix)) {
        return std::nullopt;
    }
    name.remove(0, static_cast<qsizetype>(sizeof charsetPrefix) - 1);
    if (name.size() >= 2 && name.startsWith('"') && name.endsWith('"')) {
        name = name.mid(1, name.size() - 2);
    }
    // The converters take names with anything in between for the same, and some things for options.
    const bool isPlain = std::all_of(name.cbegin(), name.cend(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || QByteArrayView("-_.:+").contains(c);
    });
    return isPlain ? std::optional(name) : std::nullopt;
}

bool isUtf8Name(const QByteArray& charset) {
    return charset == "utf-8" || charset == "utf8";
}

// Nothing follows the bytes, so that a sequence which is cut off at their end is invalid, not pending.
constexpr QStringDecoder::Flag wholeText = QStringDecoder::Flag::Stateless;

// Some charsets can express half of a surrogate pair.
void replaceHalfCharacters(DecodedText& decoded) {
    if (decoded.text.isValidUtf16()) {
        return;
    }
    QString& text = decoded.text;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
            ++i;
        } else if (text[i].isSurrogate()) {
            text[i] = QChar::ReplacementCharacter;
        }
    }
    decoded.hadInvalidBytes = true;
}

DecodedText decodeWith(QStringDecoder decoder, const QByteArray& bytes) {
    DecodedText result;
    result.text = decoder.decode(bytes);
    result.hadInvalidBytes = decoder.hasError();
    replaceHalfCharacters(result);
    return result;
}

DecodedText decodeUtf8(const QByteArray& bytes) {
    // A byte-order mark is content here: what was copied comes back byte for byte.
    return decodeWith(
        QStringDecoder(QStringDecoder::Utf8, wholeText | QStringDecoder::Flag::ConvertInitialBom), bytes);
}

} // namespace

std::optional<int> textFlavourRank(const QByteArray& target) {
    if (const auto charset = charsetOf(target)) {
        if (isUtf8Name(*charset)) {
            return 1;
        }
        if (QStringDecoder(charset->constData()).isValid()) {
            return *charset == "us-ascii" ? 7 : 2;
        }
        return std::nullopt;
    }
    static const QHash<QByteArray, int> ranks{{"UTF8_STRING", 0}, {"text/plain", 3}, {"COMPOUND_TEXT", 4},
                                              {"TEXT", 5},        {"STRING", 6},     {"C_STRING", 8}};
    const auto rank = ranks.constFind(target);
    return rank == ranks.constEnd() ? std::nullopt : std::optional(*rank);
}

DecodedText decodeText(const QByteArray& target, const QByteArray& bytes) {
    if (target == "STRING") {
        return decodeWith(QStringDecoder(QStringDecoder::Latin1), bytes);
    }
    if (target == "COMPOUND_TEXT") {
        return decodeCompoundText(bytes);
    }
    if (const auto charset = charsetOf(target); charset && !isUtf8Name(*charset)) {
        return decodeWith(QStringDecoder(charset->constData(), wholeText), bytes);
    }
    if (target == "text/plain" || target == "TEXT" || target == "C_STRING") {
        // The charset is unstated: UTF-8 today, Latin-1 from programs older than that.
        DecodedText utf8 = decodeUtf8(bytes);
        return utf8.hadInvalidBytes ? decodeWith(QStringDecoder(QStringDecoder::Latin1), bytes) : utf8;
    }
    return decodeUtf8(bytes);
}

QByteArrayView utf8Prefix(QByteArrayView utf8, qsizetype length) {
    if (utf8.size() <= length) {
        return utf8;
    }
    constexpr int longestRest = 3; // of a character behind its first byte
    qsizetype end = length;
    for (int i = 0; i < longestRest && end > 0 && (static_cast<uchar>(utf8[end]) & 0xC0) == 0x80; ++i) {
        --end;
    }
    return utf8.first(end);
}

} // namespace corvatto
