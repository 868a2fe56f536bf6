#include "StoreTest.h"

#include "support/Eventually.h"

#include <QMap>

namespace corvatto {
namespace {

using test::texts;

class Queries : public test::StoreTest {
protected:
    void SetUp() override { open(); }
};

TEST_F(Queries, TheCacheAnswersAsTheStatementDoesWhateverWasAskedBefore) {
    const QStringList pieces{u"a"_qs, u"b"_qs, u"A"_qs, u"%"_qs, u"_"_qs, u"é"_qs, QString(QChar(0))};
    QStringList queries{u"image"_qs, QChar(0) + u"image"_qs};
    for (const QString& first : pieces) {
        queries << first;
        for (const QString& second : pieces) {
            queries << first + second;
            store->insertOrUpdate(first + second, {});
        }
    }
    store->insertOrUpdateImage(u"/i"_qs, {}, u"i"_qs, u"A preview: AA"_qs, u"An application: éé"_qs);
    QMap<QString, QStringList> found;
    for (const QString& query : queries) {
        open(); // without a cache
        found[query] = contents(query);
    }
    EXPECT_LT(found[queries[0]].size(), found[queries[1]].size());
    for (const QString& before : queries) {
        for (const QString& query : queries) {
            contents(before);
            ASSERT_EQ(contents(query), found[query]) << before.toStdString() << ", " << query.toStdString();
        }
    }
}

TEST_F(Queries, TheCacheAnswersOnlyWhileNothingHasChanged) {
    for (const std::optional<QString>& query : {std::optional<QString>(), {u"ye"_qs}}) {
        record(u"yes"_qs);
        EXPECT_EQ(contents(query), texts({"yes"}));
        sql("UPDATE clipboard_items SET content = 'yet', preview = ''"); // by another program
        EXPECT_EQ(contents(query), texts({"yet"}));
        EXPECT_EQ(contents(query, 0), QStringList());
        contents(query);
        EXPECT_EQ(contents(u"yea"_qs), QStringList());
        contents(query);
        record(u"yea"_qs);
        EXPECT_EQ(contents(query, 1) + contents(u"yea"_qs), texts({"yea", "yea"}));
        contents(query);
        store->incrementCopyCount(store->fetchRecent(query, 100)[0].id);
        EXPECT_EQ(store->fetchRecent(query, 100)[0].copyCount, 2);
        clear();
        EXPECT_EQ(contents(query), QStringList());
    }
}

TEST_F(Queries, OfALongTextAPrefixIsHeldAndTheRestIsLoadedWhenNeeded) {
    const auto item = [this] {
        return newest();
    };
    for (const QString& character : texts({"x", "é", "汉", "😀"})) {
        for (int offset = 0; offset < 4; ++offset) {
            const QString text = QString(offset, u'.') + character.repeated(70'000);
            record(text);
            const ItemContent content = item().content;
            ASSERT_FALSE(content.isComplete());
            EXPECT_EQ(content.prefix(), text.left(content.prefix().size()));
            EXPECT_GE(content.prefix().size(), ItemContent::minimumPrefix);
            EXPECT_LT(content.prefix().size(), 20'000);
            EXPECT_TRUE(content.load() == text);
        }
    }
    const ItemContent content = item().content;
    sql("UPDATE clipboard_items SET content = 'by another program'");
    EXPECT_EQ(content.load(), u"by another program"_qs);
    sql("DELETE FROM clipboard_items");
    EXPECT_EQ(content.load(), std::nullopt);
}

TEST_F(Queries, ALongSearchGoesOnBesideTheEventLoop) {
    record(u"needle 2"_qs);
    record(u"needle 3"_qs);
    for (int number = 0; number < 12; ++number) {
        record(QString(5'000'000, QChar(u'A' + number)));
    }
    wait(std::chrono::seconds(-14));
    record(u"needle 4"_qs); // the order is not that of the ids
    wait(std::chrono::seconds(2));
    record(u"needle 2"_qs);
    wait(std::chrono::seconds(20));
    record(u"needle 1"_qs);
    store->setLongestSearch({}); // some rows
    QStringList found;
    int answers = 0;
    const auto search = [&](const QString& query) {
        return store->search(query, 3, [&](const QList<ClipboardItem>& items) {
            ++answers;
            for (const ClipboardItem& item : items) {
                found << *item.content.load();
            }
        });
    };
    const QString nothing = u"nobody asks for this any more"_qs;
    search(nothing);
    EXPECT_TRUE(search({}).isComplete);
    ClipboardStore other(home.path(), preferences); // takes as long
    other.setLongestSearch({});
    bool isOver = false;
    other.search(nothing, 3, [&](const auto&) { isOver = true; });
    EXPECT_TRUE(test::eventually([&] { return isOver; }));
    search(nothing);
    ClipboardStore::SearchResult first = search(u"needle"_qs);
    EXPECT_FALSE(first.isComplete);
    EXPECT_EQ(first.items.size(), 1);
    EXPECT_TRUE(test::eventually([&] { return answers > 0; }));
    EXPECT_EQ(found, texts({"needle 1", "needle 2", "needle 3"}));
    EXPECT_EQ(answers, 1);
    EXPECT_TRUE(search(u"needle"_qs).isComplete) << "the same again";

    search(u"needle 2"_qs);
    clear();
    EXPECT_LT(QFile(path("Corvatto/corvatto.sqlite3-wal")).size(), 20'000) << "while it was still read";
    EXPECT_TRUE(search(u"needle"_qs).isComplete);
}

TEST_F(Queries, SearchIsLiteralSubstringWithWildcardsInEveryColumn) {
    record(u"word first"_qs);
    record(u"axb 50 Ünïcode"_qs);
    store->insertOrUpdateFile({u"/home/a/notes.md"_qs}, u"Konqueror"_qs);
    store->insertOrUpdateImage(u"/i/1.png"_qs, {}, u"hash"_qs, u"Image 64×48"_qs, {});
    wait(std::chrono::seconds(1));
    store->incrementCopyCount(1);
    EXPECT_EQ(contents(std::nullopt, 1), texts({"word first"})) << "the newest first";
    EXPECT_EQ(contents(u"o"_qs, 1), texts({"word first"}));
    EXPECT_EQ(contents(u"kon"_qs, 1), texts({"/home/a/notes.md"})) << "not among the first";
    for (const char* blank : {"", "   ", " \t\u3000\u00A0 "}) {
        EXPECT_EQ(contents(QString::fromUtf8(blank)).size(), 4) << '"' << blank << '"';
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
             Case{"64×4", {"/i/1.png"}},         // and the preview
             Case{"%' OR 1=1 --", {}},
         }) {
        EXPECT_EQ(contents(QString::fromUtf8(each.query)), texts(each.contents)) << each.query;
    }
}

} // namespace
} // namespace corvatto
