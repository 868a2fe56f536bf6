// Reading a selection from owners that keep to no rules.
#include "X11Test.h"

#include "base/ImageDecoding.h"
#include "platform/x11/SelectionSource.h"
#include "support/CapturedOutput.h"

#include <random>

using namespace std::chrono_literals;

namespace corvatto::test {
namespace {

class SelectionTransferTest : public X11Test {
protected:
    SelectionTransferTest() {
        waitForServer();
        other->watchProperties(requestor);
        other->copy({});
    }

    // Until it has taken what the reader has asked for, of whose effects the reader hears nothing meanwhile.
    void waitForServer() {
        xcb_connection_t* raw = connection->raw();
        owned(xcb_get_input_focus_reply(raw, xcb_get_input_focus(raw), nullptr));
    }
    // The owner's part is to say, when it is let go, that it has answered.
    void startTransfer() {
        result.reset();
        transfer = std::make_unique<SelectionTransfer>(
            *connection,
            SelectionTransfer::Request{requestor, other->atom("CLIPBOARD"), other->atom("UTF8_STRING"),
                                       answer, XCB_CURRENT_TIME, 1 << 22, 1s},
            [this](const SelectionTransfer::Result& ended) { result = ended; });
        waitForServer();
        other->onRequest = [this](const Program::Request& request) {
            transfer->handleEvent(Program::notification(request, request.property));
        };
    }
    // Returns when the server has carried it out, and lets the reader do nothing meanwhile.
    void write(const char* type, const QByteArray& value) {
        other->put(requestor, answer, other->atom(type), value);
        other->sync();
        other->sync(); // before it takes this request, the server has sent all that came of the one before
    }
    // Announces pieces. The reader has asked for the announcement, and the server has told the owner to go
    // on, but the reader has not handled the reply.
    void startPieces() {
        startTransfer();
        write("INCR", QByteArray("\4\0\0\0", 4));
        letGo();
        // Events and replies take turns, and so another reply has to stand before that one for it to be
        // handled after the event that follows it.
        connection->whenReplied(xcb_get_input_focus(connection->raw()).sequence, [](const void*) {});
        other->go();
        waitForServer();
    }
    void writeAndLetRead(const QByteArray& value) {
        write("UTF8_STRING", value);
        // It hears of the piece, gets it, and gets what it has asked for because of it.
        for (int round = 0; round < 3; ++round) {
            letGo();
        }
    }
    bool soonEnded(TransferOutcome outcome) {
        return eventually([this] { return result.has_value(); }) && result->outcome == outcome;
    }

    // Lets the owner answer what it is asked, until the reading has ended, in little more time than it has.
    bool soonRead(const ClipboardReadLimits& limits) {
        content.reset();
        const SelectionSource::Ownership ownership{requestor, other->atom("CLIPBOARD"), XCB_CURRENT_TIME};
        const ClipboardReading reading(
            std::make_unique<SelectionSource>(*connection, properties, ownership, limits.silence), limits,
            [this](ClipboardContent read, const std::optional<Image>&) { content = std::move(read); });
        return other->goUntil([this] { return content.has_value(); }, 1s);
    }

    const xcb_window_t requestor = connection->createMessageWindow(XCB_EVENT_MASK_PROPERTY_CHANGE);
    const xcb_atom_t answer = other->atom("ANSWER");
    TransferProperties properties{*connection};
    std::unique_ptr<SelectionTransfer> transfer;
    std::optional<SelectionTransfer::Result> result;
    std::optional<ClipboardContent> content;
    CapturedOutput complaints;
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
        ASSERT_TRUE(soonEnded(TransferOutcome::complete));
        EXPECT_EQ(result->bytes, "first second");
    }
    startTransfer();
    other->go();
    EXPECT_TRUE(soonEnded(TransferOutcome::refused));
}

TEST_F(SelectionTransferTest, AnOwnerThatTricklesRunsOutOfTime) {
    const xcb_atom_t text = other->atom("UTF8_STRING"), pieces = other->atom("INCR"),
                     list = other->atom("ATOM");
    other->onRequest = [&](const Program::Request& request) {
        other->put(requestor, request.property, request.target == text ? pieces : list, QList{text});
        other->answer(request, request.property);
    };
    int count = 0;
    other->onDeletion = [&](xcb_atom_t property) {
        ++count;
        other->put(requestor, property, text, QByteArray("x"));
    };
    EXPECT_TRUE(soonRead({.silence = 5s, .total = 300ms}));
    EXPECT_GT(count, 5);
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
        atoms.append(other->atom(name));
    }
    const auto anyAtom = [&] {
        return atoms[below(static_cast<quint32>(atoms.size()))];
    };
    const auto putAnything = [&](xcb_atom_t property) {
        QList<quint32> words(below(4) == 0 ? below(3000) : below(20));
        std::generate(words.begin(), words.end(), [&] { return below(2) == 0 ? anyAtom() : below(~0U); });
        const auto format = static_cast<quint8>(8 << below(3));
        xcb_change_property(other->raw(), static_cast<quint8>(below(3)), requestor, property, anyAtom(),
                            format, static_cast<quint32>(words.size()) * 32 / format, words.constData());
    };
    other->onRequest = [&](Program::Request request) {
        const xcb_atom_t target = request.target, property = request.property;
        request.selection = below(20) == 0 ? anyAtom() : request.selection;
        request.target = below(20) == 0 ? anyAtom() : target;
        for (quint32 times = below(12) == 0 ? below(3) : 1; times > 0; --times) {
            if (target == other->atom("TARGETS") && below(8) != 0) {
                other->put(requestor, property, XCB_ATOM_ATOM, atoms);
            } else if (below(8) != 0) {
                putAnything(property);
            }
            other->answer(request, below(8) == 0 ? anyAtom() : property);
        }
    };
    other->onDeletion = [&](xcb_atom_t property) {
        if (below(3) != 0) {
            putAnything(property);
        }
    };
    int withContent = 0;
    for (int round = 0; round < 150; ++round) {
        ASSERT_TRUE(soonRead({.silence = 10ms, .total = 30ms, .textBytes = 4000, .imageBytes = 4000}))
            << round;
        withContent += content->isEmpty() ? 0 : 1;
        EXPECT_LE(content->textBytes.size(), 4000);
        EXPECT_EQ(content->textTarget.isEmpty(), content->textBytes.isNull());
        EXPECT_TRUE(content->imageBytes.isNull() || looksDecodable(content->imageBytes));
    }
    EXPECT_GT(withContent, 30); // not all of them were refused at the door
}

} // namespace corvatto::test
