#include "history/FloatingPanel.h"

#include "ui/Appearance.h"

#include <QApplication>
#include <QBackingStore>
#include <QBoxLayout>
#include <QCloseEvent>
#include <QWindow>

namespace corvatto {

// A dialog to the window manager: tiling ones let it float, and none hides it when another program comes to
// the front, as some do with tool windows.
FloatingPanel::FloatingPanel(QWidget* content)
    : QWidget(nullptr, Qt::Dialog | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint) {
    setWindowTitle(QStringLiteral("Corvatto"));
    setPalette(appearance::lightPalette());
    setAttribute(Qt::WA_QuitOnClose, false);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    // The screen decides the panel's size, not what the content would like.
    layout->setSizeConstraint(QLayout::SetNoConstraint);
    layout->addWidget(content);
}

void FloatingPanel::orderFront() {
    show();
    raise();
    // Shown again within moments of being hidden, the panel's window still counts as the one with the focus,
    // because Qt believes in a loss of focus only after a while; but the widget was deactivated when it was
    // hidden. The focus that now arrives is then no news to Qt, and nothing would make the panel active
    // again.
    if (QGuiApplication::focusWindow() != nullptr && QGuiApplication::focusWindow() == windowHandle()) {
        QApplication::setActiveWindow(this);
    }
}

void FloatingPanel::orderOut() {
    hide();
    // The panel is hidden nearly always, and what it looked like takes megabytes. It is drawn anew when it is
    // shown.
    if (QBackingStore* picture = backingStore()) {
        picture->resize(QSize(1, 1));
    }
}

void FloatingPanel::closeEvent(QCloseEvent* event) {
    // A window manager's "close" hides the panel like Escape does; the panel lives as long as the program.
    event->ignore();
    orderOut();
}

} // namespace corvatto
