#include "SwayDesktop.h"

#include <QJsonArray>

#include <stdexcept>

namespace corvatto::test {

namespace {

// Windows have no frames and no shadows. The bar is there for the space that it takes.
constexpr auto settings = R"(output HEADLESS-1 resolution WIDTHxHEIGHT position 0 0
default_border none
default_floating_border none
focus_follows_mouse no
xwayland XWAYLAND
bindsym Mod4+Shift+v exec PROGRAM --toggle
exec echo "display $DISPLAY"
)";
constexpr auto barSettings = "bar {\n position bottom\n height HEIGHT\n}\n";

QByteArray number(int value) {
    return QByteArray::number(value);
}

} // namespace

SwayDesktop::SwayDesktop(const Options& options) : WaylandDesktop(options) {
    for (const auto& [name, value] : {std::pair("WLR_BACKENDS", "headless"),
                                      {"WLR_LIBINPUT_NO_DEVICES", "1"},
                                      {"WLR_RENDERER", "pixman"}}) {
        setVariable(name, value);
    }
    setVariable("SWAYSOCK", home() + "/runtime/sway.sock");
    auto file = QByteArray(settings)
                    .replace("WIDTH", number(options.screen.width()))
                    .replace("HEIGHT", number(options.screen.height()))
                    .replace("XWAYLAND", options.hasXServer ? "enable" : "disable")
                    .replace("PROGRAM", CORVATTO_PROGRAM);
    if (options.bottomMargin > 0) {
        file += QByteArray(barSettings).replace("HEIGHT", number(options.bottomMargin));
    }
    m_compositor = std::make_unique<Process>("sway", QByteArrayList{"--config", writeFile("sway.conf", file)},
                                             environment(), true);
    if (!soon([this] { return m_compositor->output().endsWith('\n') || !m_compositor->isRunning(); }) ||
        !m_compositor->isRunning()) {
        throw std::runtime_error("sway does not start");
    }
    if (options.hasXServer) {
        setVariable("DISPLAY", m_compositor->output().trimmed().split(' ').value(1));
    }
    plugIn("wayland-1"); // the first name that is free, in a directory of the test's own
}

QImage SwayDesktop::picture(QRect area) {
    const QByteArray place =
        number(area.x()) + ',' + number(area.y()) + ' ' + number(area.width()) + 'x' + number(area.height());
    return QImage::fromData(outputOf("grim", {"-t", "ppm", "-g", place, "-"}).value_or(""))
        .convertToFormat(QImage::Format_RGB32);
}

QJsonDocument SwayDesktop::ask(const QByteArray& question) const {
    return QJsonDocument::fromJson(outputOf("swaymsg", {"--raw", "--type", question}).value_or(""));
}

bool SwayDesktop::panelHasKeyboard(qint64 pid) {
    // When a layer has it, nothing that sway tells of is focused.
    return ask("get_seats")[0][QLatin1String("focus")].toInt(-1) == 0 && !panel(pid).isEmpty();
}

TestDesktop::Window SwayDesktop::windowInFront(qint64) {
    QJsonArray nodes{ask("get_tree").object()};
    while (!nodes.isEmpty()) {
        const QJsonObject node = nodes.takeAt(0).toObject();
        const auto text = [&](const char* key) {
            return node[QLatin1String(key)].toString().toUtf8();
        };
        if (node[QLatin1String("focused")].toBool() && node.contains(QLatin1String("pid"))) {
            const QJsonObject rect = node[QLatin1String("rect")].toObject();
            const auto number = [&](const char* key) {
                return rect[QLatin1String(key)].toInt();
            };
            return {
                text("app_id"), text("name"), {number("x"), number("y"), number("width"), number("height")}};
        }
        for (const char* children : {"nodes", "floating_nodes"}) {
            for (const auto& child : node[QLatin1String(children)].toArray()) {
                nodes.append(child);
            }
        }
    }
    return {};
}

} // namespace corvatto::test
