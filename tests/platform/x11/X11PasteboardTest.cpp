// The clipboard among programs that own it and ask for it in every way, on a server of its own. The other
// programs are connections of the test's, so that the test decides in which order the server hears of what.
#include "platform/x11/X11Pasteboard.h"

#include "base/ImageDecoding.h"
#include "endtoend/Process.h"
#include "endtoend/XConnection.h"

#include <QElapsedTimer>
#include <QThreadPool>

#include <gtest/gtest.h>

#include <map>

using namespace std::chrono_literals;

namespace corvatto::test {
namespace {

using Flavours = std::map<QByteArray, QByteArray>;

// A program that copies, when it is given flavours, and pastes.
class Program : public XConnection {
public:
    explicit Program(const QByteArray& display) : XConnection(display), window(newWindow()) {}

    const xcb_window_t window;
    Flavours flavours;
    int refusals = 0; // of its next conversions
    bool isMute = false;
    int reads = 0; // of its flavours

    xcb_window_t newWindow() const {
        const xcb_window_t created = xcb_generate_id(raw());
        xcb_create_window(raw(), XCB_COPY_FROM_PARENT, created, root(), 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
        return created;
    }

    void own(const char* selection = "CLIPBOARD") {
        xcb_set_selection_owner(raw(), window, atom(selection), XCB_CURRENT_TIME);
        sync();
    }
    void copy(const Flavours& offered) {
        flavours = offered;
        own();
    }

    void ask(const char* target, const char* property = "ANSWER",
             xcb_timestamp_t time = XCB_CURRENT_TIME) const {
        xcb_convert_selection(raw(), window, atom("CLIPBOARD"), atom(target), atom(property), time);
        sync();
    }

    // Serves whoever asks, and takes notice of answers. Call it while the event loop runs.
    void go() {
        while (const auto event = owned(xcb_poll_for_event(raw()))) {
            const int type = event->response_type & 0x7F;
            if (type == XCB_SELECTION_REQUEST && !isMute) {
                serve(reinterpret_cast<const xcb_selection_request_event_t&>(*event));
            } else if (type == XCB_SELECTION_NOTIFY) {
                ++answers;
                lastAnswer = reinterpret_cast<const xcb_selection_notify_event_t&>(*event).property;
            }
        }
        xcb_flush(raw());
    }
    int answers = 0;
    xcb_atom_t lastAnswer = XCB_ATOM_NONE; // the property, or none when it was refused

    // The property's value, which is deleted, as one that has been read. Null when there is none.
    QByteArray take(const char* property) const {
        const auto reply = owned(xcb_get_property_reply(
            raw(), xcb_get_property(raw(), 1, window, atom(property), XCB_GET_PROPERTY_TYPE_ANY, 0, 1 << 24),
            nullptr));
        return reply->type == XCB_ATOM_NONE
                   ? QByteArray()
                   : QByteArray(static_cast<const char*>(xcb_get_property_value(reply.get())),
                                xcb_get_property_value_length(reply.get()));
    }
    // All of what comes in pieces, of which the first is the announcement.
    QByteArray takePieces(const char* property) const {
        QByteArray bytes, piece;
        EXPECT_TRUE(eventually([&] { return !take(property).isNull(); }));
        do {
            EXPECT_TRUE(eventually([&] { return !(piece = take(property)).isNull(); }));
            bytes += piece;
        } while (!piece.isEmpty());
        return bytes;
    }
    void setAtoms(const char* property, const QList<xcb_atom_t>& atoms) const {
        xcb_change_property(raw(), XCB_PROP_MODE_REPLACE, window, atom(property), XCB_ATOM_ATOM, 32,
                            static_cast<quint32>(atoms.size()), atoms.constData());
    }

private:
    void serve(const xcb_selection_request_event_t& request) {
        xcb_generic_event_t event{};
        auto& answer = reinterpret_cast<xcb_selection_notify_event_t&>(event);
        answer = {XCB_SELECTION_NOTIFY, 0,       0, request.time, request.requestor, request.selection,
                  request.target,       XCB_NONE};
        const auto found = flavours.find(name(request.target));
        if (request.target == atom("TARGETS")) {
            QList<xcb_atom_t> targets;
            for (const auto& flavour : flavours) {
                targets.append(atom(flavour.first));
            }
            xcb_change_property(raw(), XCB_PROP_MODE_REPLACE, request.requestor, request.property,
                                XCB_ATOM_ATOM, 32, static_cast<quint32>(targets.size()), targets.constData());
            answer.property = request.property;
        } else if (found != flavours.end() && refusals-- <= 0) {
            xcb_change_property(raw(), XCB_PROP_MODE_REPLACE, request.requestor, request.property,
                                request.target, 8, static_cast<quint32>(found->second.size()),
                                found->second.constData());
            answer.property = request.property;
            ++reads;
        }
        xcb_send_event(raw(), 0, request.requestor, 0, reinterpret_cast<const char*>(&event));
    }
};

class X11PasteboardTest : public ::testing::Test {
protected:
    X11PasteboardTest()
        : server("Xvfb", {"-displayfd", "1", "-screen", "0", "100x100x24", "-nolisten", "tcp"},
                 QProcessEnvironment::systemEnvironment(), true) {
        EXPECT_TRUE(soon([this] { return server.output().endsWith('\n'); }));
        display = ':' + server.output().trimmed();
        qputenv("DISPLAY", display);
        connection = XcbConnection::open();
        other.emplace(display);
        pasteboard.emplace(*connection, [this](xcb_window_t) { return inFront; });
        letGo(); // the looks at the start
    }

    // Has everybody deal with what the server has for them.
    void letGo() {
        bool isReplied = false;
        connection->whenReplied(xcb_get_input_focus(connection->raw()).sequence,
                                [&isReplied](const void*) { isReplied = true; });
        connection->flush();
        EXPECT_TRUE(eventually([&] { return isReplied; }));
    }
    template <typename Condition>
    bool soonHere(Condition condition) {
        return eventually([&] {
            other->go();
            return condition();
        });
    }
    bool soonCopied(const QString& text) {
        return soonHere([&] { return pasteboard->string() == text; });
    }
    QByteArray paste(const char* target) {
        const int before = other->answers;
        other->ask(target);
        EXPECT_TRUE(soonHere([&] { return other->answers > before; }));
        return other->lastAnswer == XCB_ATOM_NONE ? QByteArray() : other->take("ANSWER");
    }

    Process server;
    QByteArray display;
    std::unique_ptr<XcbConnection> connection;
    QString inFront;
    std::optional<Program> other;
    std::optional<X11Pasteboard> pasteboard;
};

Image gradient(QSize size) {
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < size.width(); ++x) {
            line[x] = qRgb(x * 255 / size.width(), y * 255 / size.height(), (x ^ y) & 0xFF);
        }
    }
    return Image(image);
}

} // namespace

// The end of an earlier ownership must not empty what is offered since.
TEST_F(X11PasteboardTest, ServesWhatItWroteWhenAnotherProgramCopiedJustBefore) {
    pasteboard->setString(QStringLiteral("first"));
    letGo();
    other->copy({{"UTF8_STRING", "between"}}); // the server has it, and we have not heard of it
    pasteboard->setString(QStringLiteral("second"));
    letGo();
    EXPECT_EQ(paste("UTF8_STRING"), "second");
    other->copy({{"UTF8_STRING", "after"}});
    EXPECT_TRUE(soonCopied(QStringLiteral("after")));
}

TEST_F(X11PasteboardTest, AnOwnWriteEndsTheReadingOfWhatItReplaces) {
    other->isMute = true;
    other->copy({{"UTF8_STRING", "late"}});
    letGo();
    pasteboard->setString(QStringLiteral("mine"));
    const qint64 count = pasteboard->changeCount();
    other->isMute = false;
    other->go();
    letGo();
    letGo();
    EXPECT_EQ(pasteboard->string(), QStringLiteral("mine"));
    EXPECT_EQ(pasteboard->changeCount(), count);
}

TEST_F(X11PasteboardTest, AsksAgainWhenEverythingIsRefusedAtFirst) {
    other->refusals = 3;
    other->copy({{"UTF8_STRING", "yanked"}});
    EXPECT_TRUE(soonCopied(QStringLiteral("yanked")));
    EXPECT_EQ(pasteboard->changeCount(), 1);
}

TEST_F(X11PasteboardTest, WhatAClipboardManagerRescuesIsNoCopy) {
    // One kind of manager owns the managers' selection, by another window; one says what it does.
    for (const bool saysSo : {false, true}) {
        inFront = QStringLiteral("Editor");
        other->copy({{"UTF8_STRING", "kept"}});
        ASSERT_TRUE(soonCopied(QStringLiteral("kept")));
        const qint64 count = pasteboard->changeCount();
        inFront = QStringLiteral("Other");
        Program manager(display);
        if (!saysSo) {
            xcb_set_selection_owner(manager.raw(), manager.newWindow(), manager.atom("CLIPBOARD_MANAGER"),
                                    XCB_CURRENT_TIME);
        }
        const auto offers = [&](const QByteArray& text) {
            Flavours flavours{{"UTF8_STRING", text}};
            if (saysSo) {
                flavours["application/x-kde-onlyReplaceEmpty"] = "1";
            }
            manager.copy(flavours);
            manager.reads = 0;
            EXPECT_TRUE(eventually([&] {
                manager.go();
                return manager.reads > 0;
            }));
            manager.sync();
            letGo(); // the answer is heard of
            letGo(); // and read
        };
        offers("kept");
        EXPECT_EQ(pasteboard->changeCount(), count);
        EXPECT_EQ(pasteboard->sourceApplicationName(), QStringLiteral("Editor"));
        offers("chosen from its list");
        EXPECT_EQ(pasteboard->changeCount(), count + 1);
    }
}

// With a manager about, what is left behind is offered again only when the manager has left it.
TEST_F(X11PasteboardTest, TheClipboardManagerGoesFirstWhenAnOwnerExits) {
    Program manager(display);
    manager.own("CLIPBOARD_MANAGER");
    for (const bool takesOver : {true, false}) {
        other.emplace(display);
        const QByteArray text = takesOver ? "rescued" : "left behind";
        other->copy({{"UTF8_STRING", text}});
        ASSERT_TRUE(soonCopied(QString::fromUtf8(text)));
        other.emplace(display); // the one that copied exits
        const auto isOwnedBy = [&](xcb_window_t window) {
            return owned(xcb_get_selection_owner_reply(
                             manager.raw(), xcb_get_selection_owner(manager.raw(), manager.atom("CLIPBOARD")),
                             nullptr))
                       ->owner == window;
        };
        letGo(); // it is told
        EXPECT_TRUE(isOwnedBy(XCB_NONE));
        if (takesOver) {
            manager.copy({{"UTF8_STRING", text}});
        }
        EXPECT_TRUE(eventually([&] {
            manager.go();
            return takesOver ? manager.reads > 0 : !isOwnedBy(XCB_NONE);
        }));
        letGo();
        EXPECT_EQ(isOwnedBy(manager.window), takesOver);
    }
}

// Of the moment of the copy, not of the look at it.
TEST_F(X11PasteboardTest, TheSourceIsWhatIsInFrontWhenACopyIsAnnounced) {
    inFront = QStringLiteral("Editor");
    other->copy({{"UTF8_STRING", "text"}});
    letGo(); // it is announced, and not answered
    inFront = QStringLiteral("Other");
    ASSERT_TRUE(soonCopied(QStringLiteral("text")));
    EXPECT_EQ(pasteboard->sourceApplicationName(), QStringLiteral("Editor"));
}

TEST_F(X11PasteboardTest, OldTextsCarryTheirEncodingInTheirType) {
    other->copy({{"COMPOUND_TEXT", "\x1B$(A\x56\x50\x4E\x44"}});
    EXPECT_TRUE(soonCopied(QStringLiteral("中文")));
}

TEST_F(X11PasteboardTest, AnswersForItsOwnTimeAndOnlyFromThenOn) {
    const auto serverTime = [this] {
        const quint32 events = XCB_EVENT_MASK_PROPERTY_CHANGE, none = 0;
        xcb_change_window_attributes(other->raw(), other->window, XCB_CW_EVENT_MASK, &events);
        other->setAtoms("TIME", {});
        other->sync();
        xcb_change_window_attributes(other->raw(), other->window, XCB_CW_EVENT_MASK, &none);
        xcb_timestamp_t time = 0;
        while (const auto event = owned(xcb_poll_for_event(other->raw()))) {
            if ((event->response_type & 0x7F) == XCB_PROPERTY_NOTIFY) {
                time = reinterpret_cast<const xcb_property_notify_event_t&>(*event).time;
            }
        }
        return time;
    };
    const xcb_timestamp_t before = serverTime();
    EXPECT_TRUE(soon([&] { return serverTime() > before; }));
    pasteboard->setString(QStringLiteral("text"));
    letGo();
    const xcb_timestamp_t after = serverTime();
    const QByteArray answer = paste("TIMESTAMP");
    ASSERT_EQ(answer.size(), 4);
    xcb_timestamp_t told = 0;
    std::memcpy(&told, answer.constData(), sizeof told);
    EXPECT_TRUE(before < told && told <= after) << before << ' ' << told << ' ' << after;
    for (const auto& [time, isAnswered] : {std::pair(before, false), {told, true}, {after, true}}) {
        other->answers = 0;
        other->ask("UTF8_STRING", "ANSWER", time);
        ASSERT_TRUE(soonHere([this] { return other->answers == 1; }));
        EXPECT_EQ(other->lastAnswer != XCB_ATOM_NONE, isAnswered) << time;
    }
}

TEST_F(X11PasteboardTest, ManyRequestsForACostlyEncodingHoldNothingUp) {
    const Image image = gradient({4000, 3000}); // a fifth of a second for each encoding
    pasteboard->writeImage(image);
    letGo();
    // Megabytes each, in one request that has good and bad pairs, asked several times.
    QList<xcb_atom_t> pairs;
    for (int i = 0; i < 16; ++i) {
        pairs << other->atom(i % 2 == 0 ? "image/bmp" : "image/jpeg")
              << other->atom("PART" + QByteArray::number(i));
        pairs << other->atom("text/html") << other->atom("BAD" + QByteArray::number(i));
    }
    QElapsedTimer time;
    time.start();
    for (const OfferedFlavour& flavour : offeredFlavours(ClipboardContent::ofImage(image))) {
        const bool isAsked = flavour.target == "image/bmp" || flavour.target == "image/jpeg";
        EXPECT_TRUE(!isAsked || !flavour.bytes().isNull());
    }
    const qint64 timeOfOneOfEach = time.elapsed();
    for (const char* list : {"LIST1", "LIST2", "LIST3"}) {
        other->setAtoms(list, pairs);
        xcb_convert_selection(other->raw(), other->window, other->atom("CLIPBOARD"), other->atom("MULTIPLE"),
                              other->atom(list), XCB_CURRENT_TIME);
    }
    other->sync();
    letGo(); // the requests are taken
    letGo(); // and their lists are read, and nobody waits for an encoding
    other->go();
    EXPECT_EQ(other->answers, 0);
    ASSERT_TRUE(soonHere([this] { return other->answers == 3; }));
    // None of the 48 that were asked for is still being made when two have been.
    EXPECT_TRUE(QThreadPool::globalInstance()->waitForDone(static_cast<int>(timeOfOneOfEach)));
    const QByteArray list = other->take("LIST1");
    ASSERT_EQ(list.size(), pairs.size() * qsizetype{sizeof(xcb_atom_t)});
    QList<xcb_atom_t> answered(pairs.size());
    std::memcpy(answered.data(), list.constData(), static_cast<std::size_t>(list.size()));
    for (qsizetype i = 0; i < pairs.size(); i += 4) {
        EXPECT_EQ(answered.mid(i, 4),
                  QList<xcb_atom_t>({pairs[i], pairs[i + 1], pairs[i + 2], XCB_ATOM_NONE}));
    }
    EXPECT_FALSE(other->take("PART14").isNull());
    EXPECT_EQ(decodeImage(other->takePieces("PART15"))->size(), image.pixelSize());
}

TEST_F(X11PasteboardTest, RequestorsLeaveNothingBehind) {
    const QString text(3'000'000, u'x');
    pasteboard->setString(text);
    letGo();
    // The server tells whether anybody wants the events of the requestor's window; the requestor itself does
    // not.
    const auto isWatched = [](const Program& program) {
        return owned(xcb_get_window_attributes_reply(
                         program.raw(), xcb_get_window_attributes(program.raw(), program.window), nullptr))
                   ->all_event_masks != 0;
    };
    other->ask("UTF8_STRING");
    EXPECT_TRUE(soonHere([&] { return isWatched(*other); }));
    EXPECT_EQ(other->takePieces("ANSWER"), text.toLatin1());
    EXPECT_TRUE(soonHere([&] { return !isWatched(*other); }));

    // One that goes in the middle of a transfer takes the content with it that only it was waiting for.
    SelectionOwner owner(*connection, other->atom("OTHER_SELECTION"));
    ClipboardContent content;
    content.textTarget = "UTF8_STRING";
    content.textBytes = QByteArray(3'000'000, 'y');
    owner.offer(content);
    letGo();
    std::optional<Program> dying(std::in_place, display);
    xcb_convert_selection(dying->raw(), dying->window, dying->atom("OTHER_SELECTION"),
                          dying->atom("UTF8_STRING"), dying->atom("ANSWER"), XCB_CURRENT_TIME);
    dying->sync();
    ASSERT_TRUE(eventually([&] { return isWatched(*dying); }));
    owner.offer({});
    EXPECT_FALSE(content.textBytes.isDetached());
    dying.reset();
    EXPECT_TRUE(eventually([&] { return content.textBytes.isDetached(); }));
}

TEST_F(X11PasteboardTest, IsHandedOverRightAfterItWasWritten) {
    Program manager(display);
    manager.own("CLIPBOARD_MANAGER");
    manager.flavours["SAVE_TARGETS"] = "";
    pasteboard->setString(QStringLiteral("the last"));
    bool isDone = false;
    pasteboard->handOver([&] { isDone = true; }); // the server has not announced the write
    EXPECT_EQ(paste("UTF8_STRING"), "the last");
    EXPECT_FALSE(isDone);
    QElapsedTimer time;
    time.start();
    EXPECT_TRUE(eventually([&] {
        manager.go();
        return isDone;
    }));
    EXPECT_EQ(manager.reads, 1) << "the request to save";
    EXPECT_LT(time.elapsed(), 1500);
}

// A listener may go, and another come, while an event is delivered to them, also inside an event loop of its
// own.
TEST_F(X11PasteboardTest, ListenersComeAndGoWhileTheyAreTold) {
    struct Listener : XcbEventListener {
        std::function<void()> told;
        void handleEvent(const xcb_generic_event_t&) override { told(); }
    } first, second, third;
    int events = 0;
    const auto sendEvent = [this] {
        other->ask("TARGETS");
        connection->flush();
    };
    pasteboard->setString(QStringLiteral("text"));
    letGo();
    second.told = third.told = [&] {
        ++events;
    };
    first.told = [&] {
        connection->removeListener(first);
        connection->addListener(third);
        sendEvent();
        EXPECT_TRUE(eventually([&] { return events >= 2; })); // delivered inside
    };
    connection->addListener(first);
    connection->addListener(second);
    sendEvent();
    EXPECT_TRUE(eventually([&] { return events >= 4; })); // each event to both
    connection->removeListener(second);
    connection->removeListener(third);
}

} // namespace corvatto::test
