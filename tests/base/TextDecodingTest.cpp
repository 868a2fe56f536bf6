#include "base/TextDecoding.h"

#include <QList>

#include <gtest/gtest.h>

namespace corvatto {
namespace {

TEST(TextDecoding, PrefersUtf8AndRefusesWhatItCannotDecode) {
    const QList<QByteArray> fromBestToWorst{"UTF8_STRING",
                                            "text/plain;charset=utf-8",
                                            "text/plain;charset=gb18030",
                                            "text/plain",
                                            "COMPOUND_TEXT",
                                            "TEXT",
                                            "STRING",
                                            "C_STRING"};
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
    struct Case {
        QByteArray charset, bytes;
        QStringView text;
    };
    for (const auto& [charset, bytes, text] : {Case{"utf-8", "\xEF\xBB\xBF\xE6\x96\x87", u"\uFEFF文"},
                                               Case{"gb18030", "\xC4\xE3\xBA\xC3", u"你好"},
                                               Case{"utf-16", QByteArray("\xFE\xFF\0a\0b", 6), u"ab"},
                                               Case{"utf-16", QByteArray("\xFF\xFEz\0b\0", 6), u"zb"},
                                               Case{"utf-7", "a+2AA-z", u"a\uFFFDz"}}) { // half a pair
        EXPECT_EQ(decodeText("text/plain;charset=" + charset, bytes).text, text);
    }
    EXPECT_TRUE(decodeText("text/plain;charset=gb18030", "\xC4\xE3\xBA").hadInvalidBytes) << "cut off";
    EXPECT_TRUE(decodeText("text/plain;charset=us-ascii", "caf\xE9").hadInvalidBytes);
}

TEST(TextDecoding, DecodesTextOfProgramsOlderThanUtf8) {
    const auto decoded = [](const char* bytes) {
        return decodeText("COMPOUND_TEXT", bytes).text;
    };
    EXPECT_EQ(decoded("caf\xE9\tz"), QStringLiteral("café\tz")); // Latin-1 until something else is designated
    EXPECT_EQ(decoded("a\x1B$(A\x56\x50\x1B(Bb\x1B$)A\xCE\xC4\x1B-A\xE9"), QStringLiteral("a中b文é"));
    EXPECT_EQ(decoded("\x1B$(B\x46\x7C\x4B\x5C\x1B(B \x1B-L\xD4"), QStringLiteral("日本 д"));
    EXPECT_EQ(decoded("x\x1B%G\xE6\x96\x87\x1B%@y"), QStringLiteral("x文y"));
    EXPECT_EQ(decoded("\x1B%/2\x80\x8Agb18030\x02\xC4\xE3z"), QStringLiteral("你z"));
    for (const char* broken : {"\x1B", "\x1B%/1\xFF\xFFx", "\x1B%/", "\x1B$(", "\x1B$(Zab"}) {
        decoded(broken); // ends, within the bytes
    }
    EXPECT_EQ(decodeText("TEXT", "\xE6\x96\x87").text, QStringLiteral("文"));
}

} // namespace
} // namespace corvatto
