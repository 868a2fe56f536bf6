// The clipboard among programs that own it and ask for it in every way.
#include "X11Test.h"

#include "base/ImageDecoding.h"
#include "base/Worker.h"
#include "platform/x11/X11Pasteboard.h"

#include <QSemaphore>
#include <QThreadPool>

using namespace std::chrono_literals;

namespace corvatto::test {
namespace {

using SelectionOwnerTest = X11Test;

class X11PasteboardTest : public X11Test {
protected:
    X11PasteboardTest() : pasteboard(*connection, [this](xcb_window_t) { return inFront; }) {
        letGo(); // the looks at the start
    }

    bool soonCopied(const QString& text) {
        return other->goUntil([&] { return pasteboard.string() == text; });
    }
    // Null when it is refused.
    QByteArray paste(const char* target, xcb_timestamp_t time = XCB_CURRENT_TIME) {
        const int before = other->answers;
        other->ask(target, "ANSWER", time);
        EXPECT_TRUE(other->goUntil([&] { return other->answers > before; }));
        return other->lastAnswer == XCB_ATOM_NONE ? QByteArray() : other->take("ANSWER");
    }

    QString inFront;
    X11Pasteboard pasteboard;
};

} // namespace

// The end of an earlier ownership must not empty what is offered since.
TEST_F(X11PasteboardTest, ServesWhatItWroteWhenAnotherProgramCopiedJustBefore) {
    pasteboard.setString(QStringLiteral("first"));
    letGo();
    other->copy({{"UTF8_STRING", "between"}}); // the server has it, and we have not heard of it
    pasteboard.setString(QStringLiteral("second"));
    letGo();
    EXPECT_EQ(paste("UTF8_STRING"), "second");
}

TEST_F(X11PasteboardTest, AnOwnWriteEndsTheReadingOfWhatItReplaces) {
    other->copy({{"UTF8_STRING", "late"}});
    letGo(); // it is asked
    pasteboard.setString(QStringLiteral("mine"));
    const qint64 count = pasteboard.changeCount();
    other->go();
    letGo();
    letGo();
    EXPECT_EQ(pasteboard.string(), QStringLiteral("mine"));
    EXPECT_EQ(pasteboard.changeCount(), count);
}

TEST_F(X11PasteboardTest, AsksAgainWhenEverythingIsRefusedAtFirst) {
    other->refusals = 3;
    other->copy({{"UTF8_STRING", "yanked"}});
    EXPECT_TRUE(soonCopied(QStringLiteral("yanked")));
    EXPECT_EQ(pasteboard.changeCount(), 1);
}

// A large answer may come in one property, of which a request reads a part.
TEST_F(X11PasteboardTest, APropertyOfMegabytesIsReadWhole) {
    QString large;
    for (int number = 0; large.size() < 2'800'000; ++number) {
        large += QString::number(number);
    }
    other->copy({{"UTF8_STRING", large.toLatin1()}});
    EXPECT_TRUE(soonCopied(large));
}

TEST_F(X11PasteboardTest, AClearedClipboardStaysEmpty) {
    other->copy({{"UTF8_STRING", "cleared"}});
    ASSERT_TRUE(soonCopied(QStringLiteral("cleared")));
    other->own("CLIPBOARD", XCB_NONE);
    letGo();
    EXPECT_TRUE(paste("UTF8_STRING").isNull());
    EXPECT_FALSE(pasteboard.string());
}

TEST_F(X11PasteboardTest, OldTextsCarryTheirEncodingInTheirType) {
    other->copy({{"COMPOUND_TEXT", "\x1B$(A\x56\x50\x4E\x44"}});
    EXPECT_TRUE(soonCopied(QStringLiteral("中文")));
}

// The source is what was in front at the moment of the copy, not of the look at it.
TEST_F(X11PasteboardTest, WhatAClipboardManagerRescuesIsNoCopy) {
    // One kind of manager owns the managers' selection, by another window; one says what it does.
    for (const bool saysSo : {false, true}) {
        inFront = QStringLiteral("Editor");
        other->copy({{"UTF8_STRING", "kept"}});
        letGo(); // it is announced, and not answered
        inFront = QStringLiteral("Other");
        ASSERT_TRUE(soonCopied(QStringLiteral("kept")));
        const qint64 count = pasteboard.changeCount();
        Program manager(display);
        if (!saysSo) {
            manager.own("CLIPBOARD_MANAGER", manager.createMessageWindow());
        }
        const auto offers = [&](const QByteArray& text) {
            manager.reads = 0;
            manager.copy(
                {{"UTF8_STRING", text}, {saysSo ? "application/x-kde-onlyReplaceEmpty" : "text/html", ""}});
            EXPECT_TRUE(manager.goUntil([&] { return manager.reads > 0; }));
            manager.sync();
            letGo(); // the answer is heard of
            letGo(); // and read
        };
        offers("kept");
        EXPECT_EQ(pasteboard.changeCount(), count);
        EXPECT_EQ(pasteboard.sourceApplicationName(), QStringLiteral("Editor"));
        offers("chosen from its list");
        EXPECT_EQ(pasteboard.changeCount(), count + 1);
    }
}

// With a manager about, what is left behind is offered again only when the manager has left it.
TEST_F(X11PasteboardTest, TheClipboardManagerGoesFirstWhenAnOwnerExits) {
    Program manager(display);
    manager.own("CLIPBOARD_MANAGER", manager.window);
    const auto owner = [&manager] {
        return manager.selectionOwner("CLIPBOARD");
    };
    for (const bool takesOver : {true, false}) {
        const QByteArray text = takesOver ? "rescued" : "left behind";
        other->copy({{"UTF8_STRING", text}});
        ASSERT_TRUE(soonCopied(QString::fromUtf8(text)));
        other.emplace(display); // the one that copied exits
        letGo();                // it is told
        EXPECT_EQ(owner(), XCB_NONE);
        if (takesOver) {
            manager.copy({{"UTF8_STRING", text}});
        }
        EXPECT_TRUE(manager.goUntil([&] { return takesOver ? manager.reads > 0 : owner() != XCB_NONE; }));
        letGo();
        EXPECT_EQ(owner() == manager.window, takesOver);
    }
}

TEST_F(X11PasteboardTest, AnswersForItsOwnTimeAndOnlyFromThenOn) {
    pasteboard.setString(QStringLiteral("text"));
    letGo();
    const auto told = valuesIn(paste("TIMESTAMP"));
    ASSERT_EQ(told.size(), 1);
    ASSERT_NE(told[0], XCB_CURRENT_TIME);
    EXPECT_TRUE(paste("UTF8_STRING", told[0] - 1).isNull());
    EXPECT_EQ(paste("UTF8_STRING", told[0]), "text");
    EXPECT_EQ(paste("UTF8_STRING", told[0] + 1), "text");
    // A program may copy twice at the same time, as the server counts it.
    for (const char* text : {"first", "second"}) {
        other->copy({{"UTF8_STRING", text}}, told[0]);
        EXPECT_TRUE(soonCopied(QString::fromLatin1(text)));
    }
    // Or announce one copy again and again.
    const qint64 count = pasteboard.changeCount();
    const int reads = other->reads;
    other->copy(other->flavours, told[0]);
    EXPECT_TRUE(other->goUntil([&] { return other->reads > reads; }));
    letGo(); // the answer is heard of
    letGo(); // and read
    EXPECT_EQ(pasteboard.changeCount(), count);
}

TEST_F(X11PasteboardTest, ManyRequestsForACostlyEncodingHoldNothingUp) {
    QImage image(600, 600, QImage::Format_RGB32);
    image.fill(Qt::blue);
    pasteboard.writeImage(Image(image));
    letGo();
    QThreadPool& workers = corvatto::workers();
    const int usualWorkers = workers.maxThreadCount();
    QSemaphore gate;
    workers.waitForDone(); // which ends idle ones too
    workers.setMaxThreadCount(1);
    workers.start([&gate] { gate.acquire(); }); // no encoding is made until it is opened
    // One request that has good and bad pairs, asked several times.
    const auto pairs = [&](bool isAnswered) {
        QList<xcb_atom_t> atoms;
        for (const auto& [target, property] : {std::pair("image/jpeg", "JPEG"), {"image/bmp", "BMP"}}) {
            atoms << other->atom(target) << other->atom(property) << other->atom("text/html")
                  << (isAnswered ? xcb_atom_t{XCB_ATOM_NONE} : other->atom("BAD"));
        }
        return atoms;
    };
    for (const char* list : {"LIST1", "LIST2", "LIST3"}) {
        other->put(other->window, other->atom(list), XCB_ATOM_ATOM, pairs(false));
        other->ask("MULTIPLE", list);
    }
    letGo(); // the requests are taken
    letGo(); // and their lists are read, and nobody waits for an encoding
    other->go();
    EXPECT_EQ(other->answers, 0);
    workers.setMaxThreadCount(10); // all that waits for a worker gets one
    EXPECT_LE(workers.activeThreadCount(), 3) << "the gate, and one for each of two encodings";
    gate.release();
    ASSERT_TRUE(other->goUntil([this] { return other->answers == 3; }));
    workers.setMaxThreadCount(usualWorkers);
    EXPECT_EQ(valuesIn(other->take("LIST1")), pairs(true));
    EXPECT_FALSE(other->take("JPEG").isNull());
    EXPECT_EQ(decodeImage(other->takePieces("BMP")), image);
}

TEST_F(SelectionOwnerTest, RequestorsLeaveNothingBehind) {
    SelectionOwner owner(*connection, other->atom("CLIPBOARD"));
    ClipboardContent content;
    content.textTarget = "UTF8_STRING";
    content.textBytes = QByteArray(3'000'000, 'x');
    owner.offer(content);
    letGo();
    // The server tells whether anybody wants the events of the requestor's window; the requestor itself does
    // not.
    const auto isWatched = [this] {
        const auto cookie = xcb_get_window_attributes(other->raw(), other->window);
        return owned(xcb_get_window_attributes_reply(other->raw(), cookie, nullptr))->all_event_masks != 0;
    };
    other->ask("UTF8_STRING");
    EXPECT_TRUE(eventually(isWatched));
    EXPECT_TRUE(other->takePieces("ANSWER") == content.textBytes); // no printing of all of it
    EXPECT_TRUE(eventually([&] { return !isWatched(); }));

    // One that goes in the middle of a transfer takes the content with it that only it was waiting for.
    other->ask("UTF8_STRING");
    ASSERT_TRUE(eventually(isWatched));
    owner.offer({});
    EXPECT_FALSE(content.textBytes.isDetached());
    other.reset();
    EXPECT_TRUE(eventually([&] { return content.textBytes.isDetached(); }));
}

TEST_F(X11PasteboardTest, IsHandedOverRightAfterItWasWritten) {
    other->own("CLIPBOARD_MANAGER", other->window);
    other->flavours["SAVE_TARGETS"] = "";
    pasteboard.setString(QStringLiteral("the last"));
    bool isDone = false;
    pasteboard.handOver([&] { isDone = true; }); // the server has not announced the write
    letGo();
    EXPECT_FALSE(isDone);
    EXPECT_TRUE(other->goUntil([&] { return isDone; }, 1500ms));
    EXPECT_EQ(other->reads, 1) << "the request to save";
}

// A listener may go, and another come, while an event is delivered to them, also inside an event loop of its
// own.
TEST_F(X11PasteboardTest, ListenersComeAndGoWhileTheyAreTold) {
    struct Listener : XcbEventListener {
        std::function<void()> told;
        void handleEvent(const xcb_generic_event_t&) override { told(); }
    } first, second, third;
    int events = 0;
    const auto causeEvent = [this] {
        pasteboard.setString(QStringLiteral("text"));
    };
    second.told = third.told = [&] {
        ++events;
    };
    first.told = [&] {
        connection->removeListener(first);
        connection->addListener(third);
        causeEvent();
        EXPECT_TRUE(eventually([&] { return events >= 2; })); // delivered inside
    };
    connection->addListener(first);
    connection->addListener(second);
    causeEvent();
    EXPECT_TRUE(eventually([&] { return events >= 4; })); // each event to both
    connection->removeListener(second);
    connection->removeListener(third);
}

} // namespace corvatto::test
