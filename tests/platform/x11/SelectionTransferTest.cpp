// Reading a selection from owners that keep to no rules, on a server of its own. The owner is a connection of
// the test's, so that the test decides what has happened on the server before the reader hears of any of it.
#include "platform/x11/SelectionSource.h"

#include "base/ImageDecoding.h"
#include "endtoend/Process.h"
#include "endtoend/XConnection.h"
#include "support/CapturedOutput.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <random>

using namespace std::chrono_literals;

namespace corvatto::test {
namespace {

using Outcome = TransferOutcome;

class SelectionTransferTest : public ::testing::Test, public XcbEventListener {
protected:
    SelectionTransferTest()
        : server("Xvfb", {"-displayfd", "1", "-screen", "0", "100x100x24", "-nolisten", "tcp"},
                 QProcessEnvironment::systemEnvironment(), true) {
        EXPECT_TRUE(soon([this] { return server.output().endsWith('\n'); }));
        const QByteArray display = ':' + server.output().trimmed();
        qputenv("DISPLAY", display);
        owner = std::make_unique<XConnection>(display);
        connection = XcbConnection::open();
        properties.emplace(*connection);
        connection->addListener(*this);
        requestor = connection->createMessageWindow(XCB_EVENT_MASK_PROPERTY_CHANGE);
        waitForServer();
        const quint32 events = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(owner->raw(), requestor, XCB_CW_EVENT_MASK, &events);
        const xcb_window_t window = xcb_generate_id(owner->raw());
        xcb_create_window(owner->raw(), XCB_COPY_FROM_PARENT, window, owner->root(), 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
        xcb_set_selection_owner(owner->raw(), window, owner->atom("CLIPBOARD"), XCB_CURRENT_TIME);
        owner->sync();
    }
    ~SelectionTransferTest() override { connection->removeListener(*this); }

    void handleEvent(const xcb_generic_event_t& event) override {
        if ((event.response_type & 0x7F) == XCB_PROPERTY_NOTIFY &&
            reinterpret_cast<const xcb_property_notify_event_t&>(event).state == XCB_PROPERTY_NEW_VALUE) {
            ++announcements;
        }
    }

    std::unique_ptr<ClipboardReading> startReading(const ClipboardReadLimits& limits) {
        content.reset();
        auto source = std::make_unique<SelectionSource>(
            *connection, *properties,
            SelectionSource::Ownership{requestor, owner->atom("CLIPBOARD"), XCB_CURRENT_TIME},
            limits.silence);
        return std::make_unique<ClipboardReading>(
            std::move(source), limits,
            [this](ClipboardContent read, const std::optional<Image>&) { content = std::move(read); });
    }
    // Until it has taken what the reader has asked for.
    void waitForServer() {
        xcb_connection_t* raw = connection->raw();
        owned(xcb_get_input_focus_reply(raw, xcb_get_input_focus(raw), nullptr));
    }
    void startTransfer() {
        transfer = std::make_unique<SelectionTransfer>(
            *connection,
            SelectionTransfer::Request{requestor, owner->atom("CLIPBOARD"), owner->atom("UTF8_STRING"),
                                       owner->atom("ANSWER"), XCB_CURRENT_TIME, 1 << 22, 1s},
            [this](const SelectionTransfer::Result& result) {
                outcome = result.outcome;
                bytes = result.bytes;
            });
        waitForServer();
    }

    // Returns when the server has carried it out, and lets the reader do nothing meanwhile.
    void write(const char* type, const QByteArray& value) {
        xcb_change_property(owner->raw(), XCB_PROP_MODE_REPLACE, requestor, owner->atom("ANSWER"),
                            owner->atom(type), 8, static_cast<quint32>(value.size()), value.constData());
        owner->sync();
        owner->sync(); // before it takes this request, the server has sent all that came of the one before
    }
    bool isRead() {
        const auto cookie = xcb_get_property(owner->raw(), 0, requestor, owner->atom("ANSWER"),
                                             XCB_GET_PROPERTY_TYPE_ANY, 0, 1);
        return owned(xcb_get_property_reply(owner->raw(), cookie, nullptr))->type == XCB_ATOM_NONE;
    }
    xcb_generic_event_t notification(const xcb_selection_request_event_t& request, xcb_atom_t property) {
        xcb_generic_event_t event{};
        auto& notify = reinterpret_cast<xcb_selection_notify_event_t&>(event);
        notify = {XCB_SELECTION_NOTIFY, 0,       0, request.time, request.requestor, request.selection,
                  request.target,       property};
        return event;
    }
    void notify() {
        xcb_selection_request_event_t request{};
        request.requestor = requestor;
        request.selection = owner->atom("CLIPBOARD");
        request.target = owner->atom("UTF8_STRING");
        transfer->handleEvent(notification(request, owner->atom("ANSWER")));
    }
    void answer(const xcb_selection_request_event_t& request, xcb_atom_t property) {
        const auto event = notification(request, property);
        xcb_send_event(owner->raw(), 0, requestor, 0, reinterpret_cast<const char*>(&event));
    }
    // Lets the owner answer what it is asked, until the reading has ended.
    bool soonRead(const std::function<void(const xcb_selection_request_event_t&)>& handleRequest,
                  const std::function<void(xcb_atom_t)>& handleDeletion) {
        return eventually([&] {
            while (const auto event = owned(xcb_poll_for_event(owner->raw()))) {
                const auto& property = reinterpret_cast<const xcb_property_notify_event_t&>(*event);
                const int type = event->response_type & 0x7F;
                if (type == XCB_SELECTION_REQUEST) {
                    handleRequest(reinterpret_cast<const xcb_selection_request_event_t&>(*event));
                } else if (type == XCB_PROPERTY_NOTIFY && property.state == XCB_PROPERTY_DELETE) {
                    handleDeletion(property.atom);
                }
            }
            xcb_flush(owner->raw());
            return content.has_value();
        });
    }
    // Announces pieces. The reader has asked for the announcement, and the server has told the owner to go
    // on, but the reader has not handled the reply.
    void startPieces() {
        startTransfer();
        write("INCR", QByteArray("\4\0\0\0", 4));
        EXPECT_TRUE(soon([this] { return announcements == 1; }));
        // Events and replies take turns, and so another reply has to stand before that one for it to be
        // handled after the event that follows it.
        const auto other = xcb_get_input_focus(connection->raw());
        connection->whenReplied(other.sequence, [](const void*) {});
        notify();
        const QDeadlineTimer deadline(5s);
        while (!isRead() && !deadline.hasExpired()) {
        }
    }
    void writeAndLetRead(const QByteArray& value) {
        write("UTF8_STRING", value);
        EXPECT_TRUE(soon([this] { return isRead(); }));
        // Until the reader has handled the reply, and the one to what it has asked for because of it.
        for (int round = 0; round < 2; ++round) {
            bool isReplied = false;
            connection->whenReplied(xcb_get_input_focus(connection->raw()).sequence,
                                    [&isReplied](const void*) { isReplied = true; });
            connection->flush();
            EXPECT_TRUE(soon([&] { return isReplied; }));
        }
    }
    bool soonComplete() {
        return soon([this] { return outcome.has_value(); }) && outcome == Outcome::complete;
    }

    Process server;
    std::unique_ptr<XConnection> owner;
    std::unique_ptr<XcbConnection> connection;
    std::optional<TransferProperties> properties;
    xcb_window_t requestor;
    std::unique_ptr<SelectionTransfer> transfer;
    int announcements = 0;
    std::optional<Outcome> outcome;
    std::optional<ClipboardContent> content;
    CapturedOutput complaints;
    QByteArray bytes;
};

} // namespace

// A piece may be announced before the reply to the read before it is handled, and what is not there is no
// empty answer.
TEST_F(SelectionTransferTest, PiecesAreReadInTheirTime) {
    for (const QByteArray hasty : {"hasty", ""}) {
        startPieces();
        if (!hasty.isEmpty()) {
            write("UTF8_STRING", hasty);
        }
        writeAndLetRead("first ");
        writeAndLetRead("second");
        write("UTF8_STRING", "");
        EXPECT_TRUE(soonComplete());
        EXPECT_EQ(bytes, "first second");
        outcome.reset();
        announcements = 0;
    }
    startTransfer();
    notify();
    EXPECT_TRUE(soon([this] { return outcome == Outcome::refused; }));
}

// A large answer may come in one property, of which a request reads a part.
TEST_F(SelectionTransferTest, APropertyOfMegabytesIsReadWhole) {
    QByteArray large;
    for (quint32 word = 0; word < 700'000; ++word) {
        large.append(reinterpret_cast<const char*>(&word), sizeof word);
    }
    startTransfer();
    write("UTF8_STRING", large);
    notify();
    EXPECT_TRUE(soonComplete());
    EXPECT_TRUE(bytes == large); // no printing of all of it
}

TEST_F(SelectionTransferTest, AnOwnerThatTricklesRunsOutOfTime) {
    const auto reading = startReading({.silence = 5s, .total = 300ms});
    const auto put = [this](xcb_atom_t property, const char* type, quint32 value, quint8 format) {
        xcb_change_property(owner->raw(), XCB_PROP_MODE_REPLACE, requestor, property, owner->atom(type),
                            format, 1, &value);
    };
    int pieces = 0;
    const auto handleRequest = [&](const xcb_selection_request_event_t& request) {
        if (request.target == owner->atom("TARGETS")) {
            put(request.property, "ATOM", owner->atom("UTF8_STRING"), 32);
        } else {
            put(request.property, "INCR", 1, 32);
        }
        answer(request, request.property);
    };
    EXPECT_TRUE(soonRead(handleRequest, [&](xcb_atom_t property) {
        ++pieces;
        put(property, "UTF8_STRING", 'x', 8);
    }));
    EXPECT_GT(pieces, 5);
    EXPECT_TRUE(content && content->isEmpty());
}

// Whatever owners answer, reading ends, in time, with something that can be looked at.
TEST_F(SelectionTransferTest, OwnersWithoutRules) {
    std::mt19937 random(1); // the same owners at every run
    const auto below = [&random](quint32 limit) -> quint32 {
        return static_cast<quint32>(random()) % limit;
    };
    QList<xcb_atom_t> atoms{0, 1, XCB_ATOM_ATOM, XCB_ATOM_STRING, 0x1FFFFFFF};
    for (const char* name : {"TARGETS", "INCR", "UTF8_STRING", "text/plain;charset=gb18030", "text/uri-list",
                             "x-special/gnome-copied-files", "image/png", "image/jpeg", "text/plain"}) {
        atoms.append(owner->atom(name));
    }
    const auto anyAtom = [&] {
        return atoms[below(static_cast<quint32>(atoms.size()))];
    };
    const auto put = [&](xcb_atom_t property) {
        QList<quint32> words(below(4) == 0 ? below(3000) : below(20));
        std::generate(words.begin(), words.end(), [&] { return below(2) == 0 ? anyAtom() : below(~0U); });
        const auto format = static_cast<quint8>(8 << below(3));
        xcb_change_property(owner->raw(), static_cast<quint8>(below(3)), requestor, property, anyAtom(),
                            format, static_cast<quint32>(words.size()) * 32 / format, words.constData());
    };
    const auto answerSomehow = [&](xcb_selection_request_event_t request) {
        const xcb_atom_t target = request.target, property = request.property;
        request.selection = below(20) == 0 ? anyAtom() : request.selection;
        request.target = below(20) == 0 ? anyAtom() : target;
        for (quint32 times = below(12) == 0 ? below(3) : 1; times > 0; --times) {
            if (target == owner->atom("TARGETS") && below(8) != 0) {
                xcb_change_property(owner->raw(), XCB_PROP_MODE_REPLACE, requestor, property, XCB_ATOM_ATOM,
                                    32, static_cast<quint32>(atoms.size()), atoms.constData());
            } else if (below(8) != 0) {
                put(property);
            }
            answer(request, below(8) == 0 ? anyAtom() : property);
        }
    };
    const auto goOnSometimes = [&](xcb_atom_t property) {
        if (below(3) != 0) {
            put(property);
        }
    };
    int withContent = 0;
    for (int round = 0; round < 150; ++round) {
        QElapsedTimer time;
        time.start();
        const auto reading =
            startReading({.silence = 10ms, .total = 30ms, .textBytes = 4000, .imageBytes = 4000});
        ASSERT_TRUE(soonRead(answerSomehow, goOnSometimes)) << round;
        EXPECT_LT(time.elapsed(), 1000) << round;
        withContent += content->isEmpty() ? 0 : 1;
        EXPECT_LE(content->textBytes.size(), 4000);
        EXPECT_EQ(content->textTarget.isEmpty(), content->textBytes.isNull());
        EXPECT_TRUE(content->imageBytes.isNull() || looksDecodable(content->imageBytes));
    }
    EXPECT_GT(withContent, 30); // not all of them were refused at the door
}

} // namespace corvatto::test
