// An X server of a test's own, the connection that is tested, and another program. That one is a connection
// of the test's too, so that the test decides in which order the server hears of what.
#pragma once

#include "endtoend/Process.h"
#include "endtoend/XConnection.h"
#include "platform/x11/XcbConnection.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>

namespace corvatto::test {

// Copies, when it is given flavours, and pastes.
class Program : public XConnection {
public:
    using Flavours = std::map<QByteArray, QByteArray>;
    using Request = xcb_selection_request_event_t;

    explicit Program(const QByteArray& display) : XConnection(display), window(createMessageWindow()) {}

    const xcb_window_t window;
    Flavours flavours;
    int refusals = 0; // of its next conversions
    int reads = 0;    // of its flavours
    int answers = 0;
    xcb_atom_t lastAnswer = XCB_ATOM_NONE; // the property, or none when it was refused

    std::function<void(const Request&)> onRequest = [this](const Request& request) {
        serve(request);
    };
    std::function<void(xcb_atom_t)> onDeletion = [](xcb_atom_t /*property*/) {
    }; // of a window it watches

    void own(const char* selection, xcb_window_t owner, xcb_timestamp_t time = XCB_CURRENT_TIME) const {
        xcb_set_selection_owner(raw(), owner, atom(selection), time);
        sync();
    }
    void copy(const Flavours& offered, xcb_timestamp_t time = XCB_CURRENT_TIME) {
        flavours = offered;
        own("CLIPBOARD", window, time);
    }
    void ask(const char* target, const char* property = "ANSWER",
             xcb_timestamp_t time = XCB_CURRENT_TIME) const {
        xcb_convert_selection(raw(), window, atom("CLIPBOARD"), atom(target), atom(property), time);
        sync();
    }

    // Deals with what the server has for it.
    void go() {
        while (const auto event = owned(xcb_poll_for_event(raw()))) {
            const int type = event->response_type & 0x7F;
            const auto& property = reinterpret_cast<const xcb_property_notify_event_t&>(*event);
            if (type == XCB_SELECTION_REQUEST) {
                onRequest(reinterpret_cast<const Request&>(*event));
            } else if (type == XCB_SELECTION_NOTIFY) {
                ++answers;
                lastAnswer = reinterpret_cast<const xcb_selection_notify_event_t&>(*event).property;
            } else if (type == XCB_PROPERTY_NOTIFY && property.state == XCB_PROPERTY_DELETE) {
                onDeletion(property.atom);
            }
        }
        xcb_flush(raw());
    }

    template <typename Condition>
    bool goUntil(Condition condition, std::chrono::milliseconds deadline = std::chrono::seconds(10)) {
        const auto look = [&] {
            go();
            return condition();
        };
        return eventually(look, deadline);
    }

    QByteArray take(const char* name) const { return property(window, name, true); }
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

private:
    void serve(const Request& request) {
        const auto found = flavours.find(name(request.target));
        xcb_atom_t property = request.property;
        if (request.target == atom("TARGETS")) {
            QList<xcb_atom_t> targets;
            for (const auto& flavour : flavours) {
                targets.append(atom(flavour.first));
            }
            put(request.requestor, property, XCB_ATOM_ATOM, targets);
        } else if (found != flavours.end() && refusals-- <= 0) {
            put(request.requestor, property, request.target, found->second);
            ++reads;
        } else {
            property = XCB_ATOM_NONE;
        }
        answer(request, property);
    }
};

// An X server, which is that of $DISPLAY from now on.
class XServer {
public:
    XServer()
        : m_process("Xvfb", {"-displayfd", "1", "-screen", "0", "100x100x24", "-nolisten", "tcp"},
                    QProcessEnvironment::systemEnvironment(), true) {
        EXPECT_TRUE(soon([this] { return m_process.output().endsWith('\n'); }));
        display = ':' + m_process.output().trimmed();
        qputenv("DISPLAY", display);
    }

    QByteArray display;

private:
    Process m_process;
};

class X11Test : public ::testing::Test {
protected:
    X11Test() : display(server.display), connection(XcbConnection::open()) { other.emplace(display); }

    // Has the connection deal with all that the server has for it, and with nothing that it gets later.
    void letGo() {
        bool isReplied = false;
        connection->whenReplied(xcb_get_input_focus(connection->raw()).sequence,
                                [&isReplied](const void*) { isReplied = true; });
        connection->flush();
        EXPECT_TRUE(eventually([&] { return isReplied; }));
    }
    XServer server;
    QByteArray display;
    std::unique_ptr<XcbConnection> connection;
    std::optional<Program> other;
};

} // namespace corvatto::test
