#include "StoreTest.h"

namespace corvatto {
namespace {

using test::texts;

class Queries : public test::StoreTest {
protected:
    void SetUp() override { open(); }
    QStringList found(const char* query) const { return contents(QString::fromUtf8(query)); }
};

TEST_F(Queries, ListNewestFirstUpToTheLimit) {
    for (int index = 1; index <= 105; ++index) {
        record(QString::number(index));
    }
    const QStringList recent = contents();
    ASSERT_EQ(recent.size(), 100);
    EXPECT_EQ(recent.first(), u"105");
    EXPECT_EQ(recent.last(), u"6");
    EXPECT_EQ(contents(QStringLiteral("5"), 3), texts({"105", "95", "85"}));
}

TEST_F(Queries, BlankSearchesListEverything) {
    record(QStringLiteral("a"));
    for (const char* blank : {"", "   ", "\t", " \t\u3000\u00A0 "}) {
        EXPECT_EQ(found(blank), texts({"a"})) << '"' << blank << '"';
    }
    // A line end is looked for, not ignored.
    EXPECT_EQ(found("\n"), QStringList());
}

TEST_F(Queries, SearchIsLiteralSubstringWithWildcardsInEveryColumn) {
    record(QStringLiteral("word first"));
    record(QStringLiteral("axb 50 Ünïcode"));
    store->insertOrUpdateFile({QStringLiteral("/home/a/notes.md")}, QStringLiteral("Konqueror"));
    EXPECT_EQ(found("WORD"), texts({"word first"}));
    EXPECT_EQ(found(" word"), QStringList()) << "the leading space belongs to the pattern";
    EXPECT_EQ(found(" first"), texts({"word first"}));
    EXPECT_EQ(found("a_b"), texts({"axb 50 Ünïcode"}));
    EXPECT_EQ(found("50%"), texts({"axb 50 Ünïcode"}));
    EXPECT_EQ(found("Ünï"), texts({"axb 50 Ünïcode"}));
    EXPECT_EQ(found("ünï"), QStringList()) << "only ASCII letters fold";
    EXPECT_EQ(found("konq"), texts({"/home/a/notes.md"}));
    EXPECT_EQ(found("file"), texts({"/home/a/notes.md"})) << "the type is searched too";
    EXPECT_EQ(found("%' OR 1=1 --"), QStringList());
}

} // namespace
} // namespace corvatto
