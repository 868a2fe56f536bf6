#include "ClipboardOwner.h"
#include "endtoend/XConnection.h"

#include <QSocketNotifier>

#include <algorithm>
#include <list>

namespace corvatto::test {

namespace {

class XClipboardOwner : public ClipboardOwner {
public:
    explicit XClipboardOwner(const Wishes& wishes)
        : ClipboardOwner(wishes), x(QByteArray()), m_window(x.createMessageWindow()),
          m_notifier(xcb_get_file_descriptor(x.raw()), QSocketNotifier::Read) {
        for (const QByteArray& target : targets()) {
            m_targets.append(x.atom(target));
        }
        QObject::connect(&m_notifier, &QSocketNotifier::activated, [this] { drain(); });
        xcb_set_selection_owner(x.raw(), m_window, x.atom("CLIPBOARD"), XCB_CURRENT_TIME);
        x.sync();
        say("owner");
        drain();
    }

private:
    struct PropertyTransfer : Transfer {
        xcb_window_t requestor;
        xcb_atom_t property;
    };

    void afterwards(qint64 milliseconds, const std::function<void()>& action) {
        later(milliseconds, [this, action] {
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

    void handle(const xcb_generic_event_t& event) {
        switch (event.response_type & 0x7f) {
        case XCB_SELECTION_CLEAR:
            lose();
            break;
        case XCB_SELECTION_REQUEST: {
            const auto request = reinterpret_cast<const xcb_selection_request_event_t&>(event);
            say("request " + x.name(request.target));
            if (option("mute") == 0) {
                afterwards(0, [this, request] { serve(request); });
            }
            break;
        }
        case XCB_PROPERTY_NOTIFY: {
            const auto notify = reinterpret_cast<const xcb_property_notify_event_t&>(event);
            if (notify.state == XCB_PROPERTY_DELETE) {
                afterwards(option("trickle"), [this, notify] { goOn(notify.window, notify.atom); });
            }
            break;
        }
        default:
            break;
        }
    }

    void serve(const xcb_selection_request_event_t& request) {
        const QByteArray target = x.name(request.target);
        const auto found = content().constFind(target);
        if (target == "TARGETS") {
            x.put(request.requestor, request.property, XCB_ATOM_ATOM, m_targets + QList{request.target});
        } else if (found == content().constEnd()) {
            x.answer(request, XCB_ATOM_NONE);
            return;
        } else if (found->size() > chunkSize()) {
            x.watchProperties(request.requestor);
            const auto size = static_cast<quint32>(option("announce", found->size()));
            x.put(request.requestor, request.property, x.atom("INCR"), QList{size});
            m_transfers.push_back({{target}, request.requestor, request.property});
        } else {
            x.put(request.requestor, request.property, request.target, *found);
            say("sent " + target);
        }
        x.answer(request, request.property);
    }

    // The requestor has taken the last chunk, or the announcement.
    void goOn(xcb_window_t requestor, xcb_atom_t property) {
        const auto transfer =
            std::find_if(m_transfers.begin(), m_transfers.end(), [&](const PropertyTransfer& each) {
                return each.requestor == requestor && each.property == property;
            });
        const auto send = [&](const QByteArray& chunk) {
            x.put(requestor, property, x.atom(transfer->target), chunk);
        };
        if (transfer != m_transfers.end() && !isStopped(*transfer) && !sendNextOf(*transfer, send)) {
            m_transfers.erase(transfer);
        }
    }

    XConnection x;
    xcb_window_t m_window;
    QSocketNotifier m_notifier;
    QList<xcb_atom_t> m_targets;
    std::list<PropertyTransfer> m_transfers;
};

} // namespace

std::unique_ptr<ClipboardOwner> newXClipboardOwner(const ClipboardOwner::Wishes& wishes) {
    return std::make_unique<XClipboardOwner>(wishes);
}

} // namespace corvatto::test
