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
