#include "base/TextDecoding.h"

#include <QList>

#include <gtest/gtest.h>

namespace corvatto {
namespace {

TEST(TextDecoding, PrefersUtf8AndRefusesWhatItCannotDecode) {
    std::optional<int> best;
    for (const char* target : {"UTF8_STRING", "text/plain;charset=utf-8", "text/plain;charset=gb18030",
                               "text/plain", "COMPOUND_TEXT", "TEXT", "STRING", "C_STRING"}) {
        EXPECT_LT(std::exchange(best, textFlavourRank(target)), textFlavourRank(target)) << target;
    }
    EXPECT_EQ(textFlavourRank("text/plain; Charset=\"UTF-8\""), textFlavourRank("text/plain;charset=utf-8"));
    for (const char* other : {"text/html", "text/plain;charset=", "text/plain;charset=nonsense",
                              "text/plain;charset=gb\n18030", "text/plain;charset=gb18030,swaplfnl"}) {
        EXPECT_EQ(textFlavourRank(other), std::nullopt) << other;
    }
}

TEST(TextDecoding, ReplacesBrokenUtf8) {
    for (const auto& [broken, text] : {std::pair("a\xC3z", u"a\uFFFDz"_qs), {"a\xE6", u"a\uFFFD"_qs}}) {
        const DecodedText decoded = decodeText("UTF8_STRING", broken);
        EXPECT_TRUE(decoded.hadInvalidBytes);
        EXPECT_EQ(decoded.text, text);
    }
    // Of plain text nobody knows the charset; what is no UTF-8 is taken for Latin-1.
    EXPECT_EQ(decodeText("text/plain", "caf\xE9").text, QStringLiteral("café"));
    EXPECT_EQ(decodeText("STRING", "caf\xE9").text, QStringLiteral("café"));
}

TEST(TextDecoding, DecodesStatedCharsets) {
    const auto decoded = [](const char* charset, const QByteArray& bytes) {
        return decodeText(QByteArray("text/plain;charset=") + charset, bytes).text;
    };
    EXPECT_EQ(decoded("utf-8", "\xEF\xBB\xBF\xE6\x96\x87"), u"\uFEFF文"_qs);
    EXPECT_EQ(decoded("gb18030", "\xC4\xE3\xBA\xC3"), u"你好"_qs);
    EXPECT_EQ(decoded("utf-16", QByteArray("\xFF\xFEz\0b\0", 6)), u"zb"_qs);
    EXPECT_EQ(decoded("utf-7", "a+2AA-z"), u"a\uFFFDz"_qs) << "half a pair";
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
