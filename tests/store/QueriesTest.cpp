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

TEST_F(Queries, AnswerFromWhatIsKnownOnlyWhileNothingHasChanged) {
    record(QString(5000, u'x'));
    const auto first = store->fetchRecent(std::nullopt, 100);
    const auto content = [this] {
        return store->fetchRecent(std::nullopt, 100).last().content;
    };
    record(QStringLiteral("b"));
    EXPECT_EQ(contents().size(), 2);
    EXPECT_EQ(content().constData(), first[0].content.constData()) << "not read again";
    sql("UPDATE clipboard_items SET content = 'by another program' WHERE id = 1");
    EXPECT_EQ(content(), u"by another program");

    EXPECT_EQ(found("yes"), QStringList());
    EXPECT_EQ(found("yes!"), QStringList());
    EXPECT_EQ(found("ye").size() + found("other").size(), 1);
    EXPECT_EQ(found("yes"), QStringList());
    record(QStringLiteral("yes!"));
    EXPECT_EQ(found("yes!"), texts({"yes!"}));
    EXPECT_EQ(contents(QStringLiteral("yes!"), 0), QStringList());
    EXPECT_EQ(found("yes!"), texts({"yes!"}));
    store->incrementCopyCount(3);
    EXPECT_EQ(store->fetchRecent(QStringLiteral("yes!"), 100)[0].copyCount, 2);
    store->deleteAll();
    EXPECT_EQ(found("yes!"), QStringList());
    EXPECT_EQ(contents(), QStringList());
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
