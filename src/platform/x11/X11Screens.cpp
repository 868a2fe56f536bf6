#include "platform/x11/X11Screens.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <cmath>
#include <utility>

namespace corvatto {
namespace {

double devicePixelRatio(const Screen& screen) {
    const QScreen* known = QGuiApplication::screenAt(screen.frame.center());
    return known != nullptr ? known->devicePixelRatio() : 1;
}

bool isViewable(xcb_connection_t* raw, xcb_window_t window) {
    const auto cookie = xcb_get_window_attributes(raw, window);
    const XcbPointer<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(raw, cookie, nullptr));
    return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

} // namespace

X11Screens::X11Screens(XcbConnection& connection, Screens& screens)
    : m_connection(connection), m_screens(screens) {
    m_screens.didChange = [this] {
        if (didChange) {
            didChange();
        }
    };
    m_connection.addListener(*this);
    const quint32 changes = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(m_connection.raw(), m_connection.root(), XCB_CW_EVENT_MASK, &changes);
    m_connection.flush();
}

X11Screens::~X11Screens() {
    m_connection.removeListener(*this);
    m_screens.didChange = nullptr;
}

void X11Screens::handleEvent(const xcb_generic_event_t& event) {
    if ((event.response_type & 0x7F) == XCB_PROPERTY_NOTIFY) {
        const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (change.window == m_connection.root() && change.atom == m_connection.atom("_NET_WORKAREA")) {
            m_screens.didChange();
        }
    }
}

std::vector<Screen> X11Screens::screens() const {
    std::vector<Screen> all = m_screens.screens();
    const auto struts = this->struts();
    std::transform(all.begin(), all.end(), all.begin(), [&, isOnly = all.size() == 1](const Screen& screen) {
        return withVisibleFrame(screen, isOnly, struts);
    });
    return all;
}

std::optional<Screen> X11Screens::mainScreen() const {
    const auto main = m_screens.mainScreen();
    return main ? std::optional(withVisibleFrame(*main, m_screens.screens().size() == 1, struts())) : main;
}

Screen X11Screens::withVisibleFrame(const Screen& screen, bool isOnly,
                                    const std::vector<Strut>& struts) const {
    // Qt leaves the origin of a screen as it is.
    const double ratio = devicePixelRatio(screen);
    const QRect monitor(screen.frame.topLeft(), screen.frame.size() * ratio);
    QRect free = freeOfStruts(monitor, struts);
    if (isOnly || struts.empty()) {
        // The work area also knows margins and a manager's own bars, but is the same for all monitors.
        free = withinWorkArea(free, workArea());
    }
    const auto points = [ratio](int pixels) {
        return static_cast<int>(std::ceil(pixels / ratio));
    };
    return {screen.frame,
            screen.frame.adjusted(points(free.left() - monitor.left()), points(free.top() - monitor.top()),
                                  -points(monitor.right() - free.right()),
                                  -points(monitor.bottom() - free.bottom()))};
}

// Those that may be bars: the windows that a manager lists, and those on top or in a frame there, because
// some managers do not list bars. May name a window twice.
std::vector<xcb_window_t> X11Screens::windows() const {
    xcb_connection_t* raw = m_connection.raw();
    auto found = m_connection.values(m_connection.root(), "_NET_CLIENT_LIST", XCB_ATOM_WINDOW);
    std::vector<xcb_window_t> parents{m_connection.root()};
    for (int level = 0; level < 2; ++level) {
        std::vector<xcb_query_tree_cookie_t> cookies; // all are asked before the first answer is waited for
        for (const xcb_window_t parent : std::exchange(parents, {})) {
            cookies.push_back(xcb_query_tree(raw, parent));
        }
        for (const auto cookie : cookies) {
            const XcbPointer<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(raw, cookie, nullptr));
            if (tree) {
                const xcb_window_t* children = xcb_query_tree_children(tree.get());
                parents.insert(parents.end(), children,
                               children + xcb_query_tree_children_length(tree.get()));
            }
        }
        found.insert(found.end(), parents.begin(), parents.end());
    }
    return found;
}

std::vector<Strut> X11Screens::struts() const {
    xcb_connection_t* raw = m_connection.raw();
    const auto sizeCookie = xcb_get_geometry(raw, m_connection.root());
    const XcbPointer<xcb_get_geometry_reply_t> desktop(xcb_get_geometry_reply(raw, sizeCookie, nullptr));
    if (!desktop) {
        return {};
    }
    const auto property = [&](xcb_window_t window, const char* name) {
        return xcb_get_property(raw, 0, window, m_connection.atom(name), XCB_ATOM_CARDINAL, 0, 12);
    };
    struct Question {
        xcb_window_t window;
        xcb_get_property_cookie_t partial, whole;
    };
    std::vector<Question> questions;
    for (const xcb_window_t window : windows()) {
        questions.push_back(
            {window, property(window, "_NET_WM_STRUT_PARTIAL"), property(window, "_NET_WM_STRUT")});
    }
    std::vector<Strut> found;
    for (const Question& question : questions) {
        const XcbPointer<xcb_get_property_reply_t> partial(
            xcb_get_property_reply(raw, question.partial, nullptr));
        const XcbPointer<xcb_get_property_reply_t> whole(
            xcb_get_property_reply(raw, question.whole, nullptr));
        const auto& reply = partial && partial->value_len == 12 ? partial : whole;
        if (!reply || reply->format != 32 || reply->value_len < 4 || !isViewable(raw, question.window)) {
            continue;
        }
        std::array<quint32, 12> values{};
        std::copy_n(static_cast<const quint32*>(xcb_get_property_value(reply.get())), reply->value_len,
                    values.begin());
        const auto struts = strutsFrom(values, QSize(desktop->width, desktop->height));
        found.insert(found.end(), struts.begin(), struts.end());
    }
    m_connection.flush(); // waiting may have read events
    return found;
}

// Of the desktop that is shown, pixels; null when no manager tells.
QRect X11Screens::workArea() const {
    const auto current = m_connection.values(m_connection.root(), "_NET_CURRENT_DESKTOP", XCB_ATOM_CARDINAL);
    const auto areas = m_connection.values(m_connection.root(), "_NET_WORKAREA", XCB_ATOM_CARDINAL);
    const std::size_t first = current.empty() ? 0 : std::size_t{current.front()} * 4;
    if (first + 4 > areas.size()) {
        return {};
    }
    const auto value = [&](std::size_t index) {
        return static_cast<int>(areas[first + index]);
    };
    return {value(0), value(1), value(2), value(3)};
}

} // namespace corvatto
