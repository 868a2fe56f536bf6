// A program that copies: well-behaved, slow, silent, lying or dying, as its options say.
//
//   clipboard_client [--option=number…] TARGET=FILE…    takes CLIPBOARD and offers each FILE's bytes as
//   TARGET
//       --chunk       size in bytes of a chunk; what is larger goes in chunks. 256 KiB unless given
//       --announce    the size that a transfer in chunks is announced with, whatever it is
//       --mute        1: answers nothing
//       --trickle     waits that many milliseconds before each chunk
//       --stop-after  sends no more chunks of a transfer than that
//       --die-after   exits when it has sent that many chunks
//       --again       announces itself again every so many milliseconds
//       --renew       1: with a new timestamp each time
//       --targets     lists that many other targets before its own
//       --stay        1: goes on when somebody else has taken over, with what it has begun to send
//
// Prints "owner" when it has taken CLIPBOARD, "request TARGET", "chunk TARGET" and "sent TARGET" as it serves
// others, and ends with "lost" when somebody else takes over.
#include "XConnection.h"

#include <QCoreApplication>
#include <QFile>
#include <QMap>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <list>

namespace corvatto::test {

namespace {

class Owner {
public:
    Owner(QMap<QByteArray, qint64> options, const QMap<QByteArray, QByteArray>& content)
        : x(QByteArray()), m_options(std::move(options)), m_window(x.createMessageWindow()),
          m_clipboard(x.atom("CLIPBOARD")),
          m_notifier(xcb_get_file_descriptor(x.raw()), QSocketNotifier::Read) {
        for (auto each = content.begin(); each != content.end(); ++each) {
            m_content.insert(x.atom(each.key()), each.value());
        }
        for (qint64 i = m_options.value("targets"); i > 0; --i) {
            const QByteArray name = "application/x-other-" + QByteArray::number(i);
            m_otherTargets.append(x.atom(name));
        }
        watch(m_window);
        QObject::connect(&m_notifier, &QSocketNotifier::activated, [this] { drain(); });
        askForTimestamp();
        drain();
    }

private:
    struct Transfer {
        xcb_window_t requestor;
        xcb_atom_t property, target;
        qsizetype offset = 0;
        qint64 chunks = 0;
    };

    void say(const QByteArray& line) {
        std::puts(line.constData());
        std::fflush(stdout);
    }

    void later(qint64 milliseconds, const std::function<void()>& action) {
        QTimer::singleShot(static_cast<int>(milliseconds), [this, action] {
            action();
            drain(); // an answer may have brought events with it
        });
    }

    void drain() {
        xcb_flush(x.raw());
        while (const auto event = owned(xcb_poll_for_event(x.raw()))) {
            handle(*event);
        }
        if (xcb_connection_has_error(x.raw()) != 0) {
            std::exit(3); // the display has gone
        }
    }

    // The server's time comes with the notification of a change, and the announcement follows it.
    void askForTimestamp() {
        xcb_change_property(x.raw(), XCB_PROP_MODE_APPEND, m_window, m_clipboard, XCB_ATOM_STRING, 8, 0,
                            nullptr);
    }

    void announce() {
        xcb_set_selection_owner(x.raw(), m_window, m_clipboard, m_timestamp);
        x.sync();
        say("owner");
        if (m_options.contains("again")) {
            later(m_options["again"],
                  [this] { m_options.contains("renew") ? askForTimestamp() : announce(); });
        }
    }

    void handle(const xcb_generic_event_t& event) {
        switch (event.response_type & 0x7f) {
        case XCB_SELECTION_CLEAR:
            say("lost");
            if (!m_options.contains("stay")) {
                std::exit(0);
            }
            break;
        case XCB_SELECTION_REQUEST: {
            const auto request = reinterpret_cast<const xcb_selection_request_event_t&>(event);
            say("request " + x.name(request.target));
            if (!m_options.contains("mute")) {
                later(0, [this, request] { serve(request); });
            }
            break;
        }
        case XCB_PROPERTY_NOTIFY: {
            const auto notify = reinterpret_cast<const xcb_property_notify_event_t&>(event);
            if (notify.window == m_window) {
                m_timestamp = notify.time;
                announce();
            } else if (notify.state == XCB_PROPERTY_DELETE) {
                later(m_options.value("trickle"), [this, notify] { goOn(notify.window, notify.atom); });
            }
            break;
        }
        default:
            break;
        }
    }

    void watch(xcb_window_t window) {
        const quint32 events = XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(x.raw(), window, XCB_CW_EVENT_MASK, &events);
    }

    template <typename Value>
    void set(const xcb_selection_request_event_t& request, xcb_atom_t type, const Value* values,
             qsizetype count) {
        xcb_change_property(x.raw(), XCB_PROP_MODE_REPLACE, request.requestor, request.property, type,
                            8 * sizeof(Value), static_cast<quint32>(count), values);
    }

    void serve(const xcb_selection_request_event_t& request) {
        xcb_selection_notify_event_t answer{};
        answer.response_type = XCB_SELECTION_NOTIFY;
        answer.time = request.time;
        answer.requestor = request.requestor;
        answer.selection = request.selection;
        answer.target = request.target;
        answer.property = request.property;
        const auto found = m_content.constFind(request.target);
        if (request.target == x.atom("TARGETS")) {
            const auto targets = m_otherTargets + m_content.keys() << request.target;
            set(request, XCB_ATOM_ATOM, targets.constData(), targets.size());
        } else if (found == m_content.constEnd()) {
            answer.property = XCB_NONE;
        } else if (found->size() > chunkSize()) {
            watch(request.requestor);
            const auto size = static_cast<quint32>(m_options.value("announce", found->size()));
            set(request, x.atom("INCR"), &size, 1);
            m_transfers.push_back({request.requestor, request.property, request.target});
        } else {
            set(request, request.target, found->constData(), found->size());
            say("sent " + x.name(request.target));
        }
        xcb_send_event(x.raw(), 0, request.requestor, 0, reinterpret_cast<const char*>(&answer));
    }

    // The requestor has taken the last chunk, or the announcement.
    void goOn(xcb_window_t requestor, xcb_atom_t property) {
        const auto transfer = std::find_if(m_transfers.begin(), m_transfers.end(), [&](const Transfer& each) {
            return each.requestor == requestor && each.property == property;
        });
        if (transfer == m_transfers.end() || transfer->chunks == m_options.value("stop-after", -1)) {
            return;
        }
        const QByteArray& bytes = m_content[transfer->target];
        const qsizetype size = std::min(chunkSize(), bytes.size() - transfer->offset);
        xcb_change_property(x.raw(), XCB_PROP_MODE_REPLACE, requestor, property, transfer->target, 8,
                            static_cast<quint32>(size), bytes.constData() + transfer->offset);
        transfer->offset += size;
        ++transfer->chunks;
        say((size > 0 ? "chunk " : "sent ") + x.name(transfer->target));
        if (transfer->chunks == m_options.value("die-after", -1)) {
            std::exit(0);
        }
        if (size == 0) {
            m_transfers.erase(transfer);
        }
    }

    qsizetype chunkSize() const { return m_options.value("chunk", 256 << 10); }

    XConnection x;
    QMap<QByteArray, qint64> m_options;
    xcb_window_t m_window;
    xcb_atom_t m_clipboard;
    QSocketNotifier m_notifier;
    xcb_timestamp_t m_timestamp = XCB_CURRENT_TIME;
    QMap<xcb_atom_t, QByteArray> m_content;
    QList<xcb_atom_t> m_otherTargets;
    std::list<Transfer> m_transfers;
};

} // namespace

} // namespace corvatto::test

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    QMap<QByteArray, qint64> options;
    QMap<QByteArray, QByteArray> content;
    for (int i = 1; i < argc; ++i) {
        const QByteArray argument = argv[i];
        // The last "=" divides: targets such as text/plain;charset=utf-8 have one of their own.
        const auto equals = argument.lastIndexOf('=');
        if (argument.startsWith("--")) {
            options[argument.mid(2, equals - 2)] = argument.mid(equals + 1).toLongLong();
        } else {
            QFile file(QString::fromUtf8(argument.mid(equals + 1)));
            file.open(QIODevice::ReadOnly);
            content[argument.left(equals)] = file.readAll();
        }
    }
    const corvatto::test::Owner owner(options, content);
    return QCoreApplication::exec();
}
