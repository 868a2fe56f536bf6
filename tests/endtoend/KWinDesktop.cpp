#include "KWinDesktop.h"

#include "PlasmaWindows.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QFile>
#include <QStandardPaths>

#include <gtest/gtest.h>

#include <unistd.h>

namespace corvatto::test {

namespace {

const QString busName = QStringLiteral("kwin");

TestDesktop::Options withSessionBus(TestDesktop::Options options) {
    options.hasSessionBus = true;
    return options;
}

void skipTest() {
    GTEST_SKIP() << "kwin_wayland, with the pictures that OpenGL draws for it, does not run here";
}

} // namespace

KWinDesktop::KWinDesktop(const Options& options)
    : WaylandDesktop(withSessionBus(options)),
      m_bus(QDBusConnection::connectToBus(QString::fromUtf8(sessionBus()), busName)) {
    // Where a process may not have the capability of the installed file, only a plain copy of it starts.
    const auto program = home() + "/kwin_wayland";
    if (!QFile::copy(QStandardPaths::findExecutable(QStringLiteral("kwin_wayland")),
                     QString::fromUtf8(program))) {
        skipTest();
        return;
    }
    writeFile("config/kdeglobals", "[KDE]\nAnimationDurationFactor=0\n");
    setVariable("KWIN_WAYLAND_NO_PERMISSION_CHECKS", "1"); // keys and windows for everybody
    setVariable("KWIN_SCREENSHOT_NO_PERMISSION_CHECKS", "1");
    const QByteArray socket = "wayland-1";
    m_compositor = std::make_unique<Process>(
        program,
        QByteArrayList{"--virtual", "--width", QByteArray::number(options.screen.width()), "--height",
                       QByteArray::number(options.screen.height()), "--no-lockscreen", "--socket", socket},
        environment(), true);
    if (!soon([this] {
            return !picture({0, 0, 1, 1}).isNull() || !m_compositor->isRunning();
        }) ||
        !m_compositor->isRunning()) {
        skipTest();
        return;
    }
    plugIn(socket);
    m_windows = std::make_unique<PlasmaWindows>(home() + "/runtime/" + socket);
    if (options.bottomMargin > 0) {
        const auto settings =
            R"({"position": "bottom", "height": )" + QByteArray::number(options.bottomMargin) + '}';
        m_taskBar = std::make_unique<Process>(
            "waybar", QByteArrayList{"--config", writeFile("waybar.json", settings)}, environment(), true);
    }
}

void KWinDesktop::minimizeWindowInFront() {
    m_windows->minimizeActive();
}

KWinDesktop::~KWinDesktop() {
    QDBusConnection::disconnectFromBus(busName);
}

QImage KWinDesktop::picture(QRect area) {
    int ends[2];
    if (pipe(ends) != 0) {
        return {};
    }
    QVariantMap described;
    {
        auto call = QDBusMessage::createMethodCall(
            QStringLiteral("org.kde.KWin"), QStringLiteral("/org/kde/KWin/ScreenShot2"),
            QStringLiteral("org.kde.KWin.ScreenShot2"), QStringLiteral("CaptureArea"));
        call << area.x() << area.y() << static_cast<uint>(area.width()) << static_cast<uint>(area.height())
             << QVariantMap() << QVariant::fromValue(QDBusUnixFileDescriptor(ends[1]));
        close(ends[1]);
        described = qdbus_cast<QVariantMap>(m_bus.call(call).arguments().value(0));
    } // with our writing end, so that the reading ends
    QFile pixels;
    pixels.open(ends[0], QIODevice::ReadOnly, QFile::AutoCloseHandle);
    const QByteArray bytes = pixels.readAll();
    const auto number = [&](const char* key) {
        return described.value(QLatin1String(key)).toInt();
    };
    if (bytes.isEmpty() || bytes.size() < number("stride") * number("height")) {
        return {};
    }
    return QImage(reinterpret_cast<const uchar*>(bytes.constData()), number("width"), number("height"),
                  number("stride"), static_cast<QImage::Format>(number("format")))
        .convertToFormat(QImage::Format_RGB32);
}

bool KWinDesktop::panelHasKeyboard(qint64 pid) {
    return m_windows->active().rect.isEmpty() && !panel(pid).isEmpty();
}

TestDesktop::Window KWinDesktop::windowInFront(qint64) {
    return m_windows->active();
}

// KWin tells nobody of an empty clipboard, so wl-paste waits for its answer.
QList<QByteArray> KWinDesktop::targets() {
    return outputOf("timeout", {"4", "wl-paste", "--list-types"}).value_or("").split('\n');
}

} // namespace corvatto::test
