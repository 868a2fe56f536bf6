#include "platform/qt/QtScreens.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>

namespace corvatto {
namespace {

Screen screenFrom(const QScreen& screen) {
    return {screen.geometry(), screen.availableGeometry()};
}

} // namespace

QtScreens::QtScreens() {
    m_change.setSingleShot(true);
    m_change.setInterval(0);
    m_change.callOnTimeout([this] {
        if (didChange) {
            didChange();
        }
    });
    const auto start = qOverload<>(&QTimer::start);
    QObject::connect(qGuiApp, &QGuiApplication::screenRemoved, &m_change, start);
    QObject::connect(qGuiApp, &QGuiApplication::screenAdded, &m_change, [this](const QScreen* screen) {
        watch(screen);
        m_change.start();
    });
    for (const QScreen* screen : QGuiApplication::screens()) {
        watch(screen);
    }
}

void QtScreens::watch(const QScreen* screen) {
    const auto start = qOverload<>(&QTimer::start);
    QObject::connect(screen, &QScreen::geometryChanged, &m_change, start);
    QObject::connect(screen, &QScreen::availableGeometryChanged, &m_change, start);
}

QPoint QtScreens::mouseLocation() const {
    return QCursor::pos();
}

std::vector<Screen> QtScreens::screens() const {
    std::vector<Screen> all;
    for (const QScreen* screen : QGuiApplication::screens()) {
        all.push_back(screenFrom(*screen));
    }
    return all;
}

std::optional<Screen> QtScreens::mainScreen() const {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen != nullptr ? std::optional(screenFrom(*screen)) : std::nullopt;
}

} // namespace corvatto
