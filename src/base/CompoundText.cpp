#include "base/CompoundText.h"

#include <QStringDecoder>

#include <algorithm>

namespace corvatto {
namespace {

constexpr char escape = '\x1B';

struct CharacterSet {
    QByteArrayView designation; // what follows the escape character
    bool isRight;               // of the bytes from 0xA0 on; otherwise of those below 0x80
    const char* codec;          // which decodes the set when all its bytes have their high bit
};

// A set of two bytes a character is designated for the left or the right half; "$)A" and "$(A" differ in this
// alone.
constexpr CharacterSet characterSets[] = {
    {"(B", false, "us-ascii"},  {"(J", false, "us-ascii"},  {"-A", true, "iso-8859-1"},
    {"-B", true, "iso-8859-2"}, {"-C", true, "iso-8859-3"}, {"-D", true, "iso-8859-4"},
    {"-F", true, "iso-8859-7"}, {"-G", true, "iso-8859-6"}, {"-H", true, "iso-8859-8"},
    {"-L", true, "iso-8859-5"}, {"-M", true, "iso-8859-9"}, {")I", true, "shift_jis"},
    {"$(A", false, "gb2312"},   {"$)A", true, "gb2312"},    {"$(B", false, "euc-jp"},
    {"$)B", true, "euc-jp"},    {"$(C", false, "euc-kr"},   {"$)C", true, "euc-kr"},
};

class Decoder {
public:
    explicit Decoder(QByteArrayView bytes) : m_rest(bytes) {}

    DecodedText decode() {
        while (!m_rest.isEmpty()) {
            if (m_rest.front() == escape) {
                m_rest = m_rest.sliced(1);
                readEscapeSequence();
            } else {
                const auto end = std::find(m_rest.begin(), m_rest.end(), escape);
                decodeSegment(take(end - m_rest.begin()));
            }
        }
        return std::move(m_result);
    }

private:
    QByteArrayView take(qsizetype length) {
        const QByteArrayView taken = m_rest.first(std::min(length, m_rest.size()));
        m_rest = m_rest.sliced(taken.size());
        return taken;
    }

    void append(const char* codec, QByteArrayView bytes) {
        QStringDecoder decoder(codec, QStringDecoder::Flag::Stateless);
        if (decoder.isValid()) {
            m_result.text += decoder.decode(bytes);
            m_result.hadInvalidBytes |= decoder.hasError();
        } else {
            m_result.text += QChar(QChar::ReplacementCharacter);
            m_result.hadInvalidBytes = true;
        }
    }

    void readEscapeSequence() {
        if (m_rest.startsWith("%G")) { // UTF-8, up to the return to ISO 2022
            const QByteArrayView rest = m_rest.sliced(2);
            const qsizetype end = rest.indexOf("\x1B%@");
            append("utf-8", rest.first(end < 0 ? rest.size() : end));
            m_rest = end < 0 ? QByteArrayView() : rest.sliced(end + 3);
            return;
        }
        if (m_rest.startsWith("%/") && m_rest.size() >= 5) { // a segment of stated length in a named encoding
            const auto high = static_cast<quint8>(m_rest[3]) & 0x7F,
                       low = static_cast<quint8>(m_rest[4]) & 0x7F;
            m_rest = m_rest.sliced(5);
            const QByteArrayView segment = take(high * 128 + low);
            const qsizetype nameEnd = segment.indexOf('\x02');
            const QByteArray name = segment.first(std::max<qsizetype>(nameEnd, 0)).toByteArray();
            append(name.constData(), segment.sliced(nameEnd + 1));
            return;
        }
        for (const CharacterSet& set : characterSets) {
            if (m_rest.startsWith(set.designation)) {
                (set.isRight ? m_right : m_left) = set.codec;
                m_rest = m_rest.sliced(set.designation.size());
                return;
            }
        }
        // An unknown set: its designation ends with the first byte that is no intermediate one.
        const auto end =
            std::find_if(m_rest.begin(), m_rest.end(), [](char c) { return c < 0x20 || c > 0x2F; });
        take(end - m_rest.begin() + 1);
        m_result.hadInvalidBytes = true;
    }

    // Bytes of either half, in runs of one half each.
    void decodeSegment(QByteArrayView segment) {
        const auto isRight = [](char c) {
            return (static_cast<quint8>(c) & 0x80) != 0;
        };
        while (!segment.isEmpty()) {
            const bool right = isRight(segment.front());
            const auto end =
                std::find_if(segment.begin(), segment.end(), [&](char c) { return isRight(c) != right; });
            QByteArray run = segment.first(end - segment.begin()).toByteArray();
            segment = segment.sliced(run.size());
            if (!right && qstrcmp(m_left, "us-ascii") != 0) {
                decodeLeftRun(run);
            } else {
                append(right ? m_right : m_left, run);
            }
        }
    }

    // The codecs know these sets by bytes with the high bit. Controls and the space are not part of any set.
    void decodeLeftRun(QByteArray& run) {
        for (char& c : run) {
            c = c > 0x20 ? static_cast<char>(c | 0x80) : c;
        }
        append(m_left, run);
    }

    QByteArrayView m_rest;
    const char* m_left = "us-ascii";
    const char* m_right = "iso-8859-1";
    DecodedText m_result;
};

} // namespace

DecodedText decodeCompoundText(QByteArrayView bytes) {
    return Decoder(bytes).decode();
}

} // namespace corvatto
