#include "StoreTest.h"

namespace corvatto {
namespace {

using test::texts;

class Queries : public test::StoreTest {
protected:
    void SetUp() override { open(); }
    // What is found for a query that is typed letter by letter.
    QStringList found(const char* query) const {
        const QString whole = QString::fromUtf8(query);
        for (int size = 1; size < whole.size(); ++size) {
            contents(whole.left(size));
        }
        return contents(whole);
    }
};

TEST_F(Queries, AnswerFromWhatIsKnownOnlyWhileNothingHasChanged) {
    record(QStringLiteral("a"));
    record(QStringLiteral("b"));
    EXPECT_EQ(contents(), texts({"b", "a"}));
    sql("UPDATE clipboard_items SET content = 'by another program' WHERE id = 1");
    EXPECT_EQ(contents(), texts({"b", "by another program"}));

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
    EXPECT_EQ(found("yes!") + contents(), QStringList());
}

TEST_F(Queries, ALongTextIsHeldByItsBeginningAndReadWhenItIsNeeded) {
    const auto item = [this] {
        return store->fetchRecent(std::nullopt, 1).value(0);
    };
    for (const QString& character : texts({"x", "é", "汉", "😀"})) {
        for (int offset = 0; offset < 4; ++offset) {
            const QString text = QString(offset, u'.') + character.repeated(70'000);
            record(text);
            const ItemContent content = item().content;
            ASSERT_FALSE(content.isHeldWhole());
            EXPECT_EQ(content.beginning(), text.left(content.beginning().size()));
            EXPECT_GE(content.beginning().size(), ItemContent::shortestBeginning);
            EXPECT_LT(content.beginning().size(), 20'000);
            EXPECT_TRUE(content.whole() == text);
        }
    }
    const ItemContent content = item().content;
    sql("UPDATE clipboard_items SET content = 'by another program'");
    EXPECT_EQ(content.whole(), QStringLiteral("by another program"));
    sql("DELETE FROM clipboard_items");
    EXPECT_EQ(content.whole(), std::nullopt);
    record(QString(70'000, u'x'));
    const ItemContent outlivesTheStore = item().content;
    store.reset();
    EXPECT_EQ(outlivesTheStore.whole(), std::nullopt);
}

TEST_F(Queries, SearchIsLiteralSubstringWithWildcardsInEveryColumn) {
    record(QStringLiteral("word first"));
    record(QStringLiteral("axb 50 Ünïcode"));
    store->insertOrUpdateFile({QStringLiteral("/home/a/notes.md")}, QStringLiteral("Konqueror"));
    wait(std::chrono::seconds(1));
    store->incrementCopyCount(1);
    EXPECT_EQ(contents(std::nullopt, 1), texts({"word first"})) << "the newest first";
    EXPECT_EQ(contents(QStringLiteral("o"), 1), texts({"word first"}));
    EXPECT_EQ(contents(QStringLiteral("kon"), 1), texts({"/home/a/notes.md"})) << "not among the first";
    for (const char* blank : {"", "   ", " \t\u3000\u00A0 "}) {
        EXPECT_EQ(found(blank).size(), 3) << '"' << blank << '"';
    }
    struct Case {
        const char* query;
        std::initializer_list<const char*> contents;
    };
    for (const Case& each : {
             Case{"\n", {}}, // looked for, not ignored
             Case{"WORD", {"word first"}},
             Case{" word", {}}, // the leading space belongs to the pattern
             Case{"a_b", {"axb 50 Ünïcode"}},
             Case{"ünï", {}}, // only ASCII letters fold
             Case{"konq", {"/home/a/notes.md"}},
             Case{"file", {"/home/a/notes.md"}}, // the type is searched too
             Case{"%' OR 1=1 --", {}},
         }) {
        EXPECT_EQ(found(each.query), texts(each.contents)) << each.query;
    }
}

} // namespace
} // namespace corvatto
