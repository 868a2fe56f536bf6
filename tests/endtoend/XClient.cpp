#include "XClient.h"

#include "Process.h"

#include <stdexcept>

namespace corvatto::test {

void XClient::xdotool(const QByteArrayList& arguments) {
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DISPLAY"), QString::fromLatin1(m_display));
    Process process("xdotool", arguments, environment);
    if (process.exitStatus() != 0) {
        throw std::runtime_error("xdotool " + arguments.join(' ').toStdString());
    }
}

void XClient::click(QPoint position, int times, int button) {
    const auto text = [](int number) {
        return QByteArray::number(number);
    };
    xdotool({"mousemove", text(position.x()), text(position.y()), "click", "--repeat", text(times), "--delay",
             "20", text(button)});
}

QList<XClient::Window> XClient::visibleWindows(qint64 pid) {
    QList<Window> found, parents{root()};
    while (!parents.isEmpty()) {
        const auto tree =
            owned(xcb_query_tree_reply(raw(), xcb_query_tree(raw(), parents.takeFirst()), nullptr));
        for (int i = 0; tree && i < xcb_query_tree_children_length(tree.get()); ++i) {
            const Window window = xcb_query_tree_children(tree.get())[i];
            const auto attributes = owned(
                xcb_get_window_attributes_reply(raw(), xcb_get_window_attributes(raw(), window), nullptr));
            if (attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE) {
                // What is not a program's may be a frame around it.
                (cardinal(window, "_NET_WM_PID") == pid ? found : parents).append(window);
            }
        }
    }
    return found;
}

QRect XClient::geometry(Window window) {
    const auto size = owned(xcb_get_geometry_reply(raw(), xcb_get_geometry(raw(), window), nullptr));
    const auto origin = owned(xcb_translate_coordinates_reply(
        raw(), xcb_translate_coordinates(raw(), window, root(), 0, 0), nullptr));
    return size && origin ? QRect(origin->dst_x, origin->dst_y, size->width, size->height) : QRect();
}

quint32 XClient::cardinal(Window window, const char* name) {
    return valuesIn(property(window, name)).value(0);
}

QList<QByteArray> XClient::states(Window window) {
    QList<QByteArray> names;
    for (const auto state : valuesIn(property(window, "_NET_WM_STATE"))) {
        names.append(name(state));
    }
    return names;
}

XClient::Window XClient::topWindow() {
    const auto stacking = valuesIn(property(root(), "_NET_CLIENT_LIST_STACKING"));
    return stacking.isEmpty() ? XCB_NONE : stacking.last();
}

XClient::Window XClient::createWindow(QRect geometry, const QByteArray& windowClass,
                                      const QByteArray& desktopEntry) {
    const Window window = xcb_generate_id(raw());
    const quint32 magenta = 0xff00ff;
    xcb_create_window(raw(), XCB_COPY_FROM_PARENT, window, root(), static_cast<qint16>(geometry.x()),
                      static_cast<qint16>(geometry.y()), static_cast<quint16>(geometry.width()),
                      static_cast<quint16>(geometry.height()), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL, &magenta);
    const QByteArray both = windowClass.toLower() + '\0' + windowClass + '\0';
    put(window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, both);
    put(window, atom("_GTK_APPLICATION_ID"), atom("UTF8_STRING"), desktopEntry);
    xcb_map_window(raw(), window);
    sync();
    return window;
}

bool XClient::grabKey(xcb_keycode_t code, quint16 modifierMask) {
    const auto cookie =
        xcb_grab_key_checked(raw(), 0, root(), modifierMask, code, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    return owned(xcb_request_check(raw(), cookie)) == nullptr;
}

XClient::Window XClient::keyboard() {
    return owned(xcb_get_input_focus_reply(raw(), xcb_get_input_focus(raw()), nullptr))->focus;
}

void XClient::own(const QByteArray& selection) {
    xcb_set_selection_owner(raw(), createMessageWindow(), atom(selection), XCB_CURRENT_TIME);
    sync();
}

QImage XClient::picture(QRect area) {
    const auto width = static_cast<quint16>(area.width()), height = static_cast<quint16>(area.height());
    const auto cookie = xcb_get_image(raw(), XCB_IMAGE_FORMAT_Z_PIXMAP, root(), static_cast<qint16>(area.x()),
                                      static_cast<qint16>(area.y()), width, height, ~0U);
    const auto reply = owned(xcb_get_image_reply(raw(), cookie, nullptr));
    return reply ? QImage(xcb_get_image_data(reply.get()), width, height, QImage::Format_RGB32).copy()
                 : QImage();
}

} // namespace corvatto::test
