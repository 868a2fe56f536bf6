#include "platform/TextDecoding.h"

#include <QList>

#include <gtest/gtest.h>

namespace corvatto {
namespace {

TEST(TextDecoding, PrefersUtf8AndRefusesWhatItCannotDecode) {
    const QList<QByteArray> fromBestToWorst{"UTF8_STRING", "text/plain;charset=utf-8",
                                            "text/plain;charset=gb18030", "text/plain", "STRING"};
    for (qsizetype index = 1; index < fromBestToWorst.size(); ++index) {
        EXPECT_LT(textFlavourRank(fromBestToWorst[index - 1]), textFlavourRank(fromBestToWorst[index]))
            << fromBestToWorst[index].toStdString();
    }
    EXPECT_EQ(textFlavourRank("text/plain; Charset=\"UTF-8\""), textFlavourRank("text/plain;charset=utf-8"));
    for (const char* other : {"text/html", "TARGETS", "text/plain;charset=", "text/plain;charset=nonsense",
                              "", "text/plain;charset=gb\n18030", "text/plain;charset=gb18030,swaplfnl"}) {
        EXPECT_EQ(textFlavourRank(other), std::nullopt) << other;
    }
}

TEST(TextDecoding, KeepsEveryCharacterOfUtf8) {
    const QByteArray bytes("\xEF\xBB\xBF"
                           "a\0\xE6\x96\x87\r\n\xF0\x9F\x98\x80",
                           14);
    for (const char* target : {"UTF8_STRING", "text/plain;charset=utf-8", "text/plain"}) {
        const DecodedText decoded = decodeText(target, bytes);
        EXPECT_EQ(decoded.text.toUtf8(), bytes) << target;
        EXPECT_FALSE(decoded.hadInvalidBytes);
    }
}

TEST(TextDecoding, ReplacesBrokenUtf8) {
    const QChar replacement(QChar::ReplacementCharacter);
    for (const char* broken : {"a\xFFz", "a\xC3z", "a\x80z", "a\xE6\x96"}) {
        const DecodedText decoded = decodeText("UTF8_STRING", broken);
        EXPECT_TRUE(decoded.hadInvalidBytes);
        EXPECT_TRUE(decoded.text.startsWith(u'a') && decoded.text.contains(replacement)) << broken;
        EXPECT_EQ(decoded.text.endsWith(u'z'), QByteArray(broken).endsWith('z')) << "lost what follows";
    }
    // Of plain text nobody knows the charset; what is no UTF-8 is taken for Latin-1.
    EXPECT_EQ(decodeText("text/plain", "caf\xE9").text, QStringLiteral("café"));
    EXPECT_EQ(decodeText("STRING", "caf\xE9").text, QStringLiteral("café"));
}

TEST(TextDecoding, DecodesStatedCharsets) {
    EXPECT_EQ(decodeText("text/plain;charset=gb18030", "\xC4\xE3\xBA\xC3").text, QStringLiteral("你好"));
    EXPECT_EQ(decodeText("text/plain;charset=ISO-8859-15", "\xA4").text, QStringLiteral("€"));
    EXPECT_EQ(decodeText("text/plain;charset=Shift_JIS", QByteArray("\x93\xFA\0z", 4)).text,
              QStringLiteral("日\0z"));
    EXPECT_EQ(decodeText("text/plain;charset=utf-16", QByteArray("\xFE\xFF\0a\0b", 6)).text,
              QStringLiteral("ab"));
    EXPECT_EQ(decodeText("text/plain;charset=utf-16", QByteArray("\xFF\xFE"
                                                                 "a\0b\0",
                                                                 6))
                  .text,
              QStringLiteral("ab"));
    EXPECT_TRUE(decodeText("text/plain;charset=gb18030", "\xC4\xE3\xBA").hadInvalidBytes) << "cut off";
    EXPECT_TRUE(decodeText("text/plain;charset=us-ascii", "caf\xE9").hadInvalidBytes);
    EXPECT_EQ(decodeText("text/plain;charset=utf-7", "a+2AA-z").text, QStringLiteral("a\uFFFDz"))
        << "half a pair";
}

} // namespace
} // namespace corvatto
