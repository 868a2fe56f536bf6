#include "history/FloatingPanel.h"

#include "ui/Appearance.h"

#include <QApplication>
#include <QBackingStore>
#include <QBoxLayout>
#include <QCloseEvent>
#include <QWindow>

namespace corvatto {

// To the window manager it is a dialog: tiling managers let dialogs float, and none hides them when another
// program comes to the front, as some do with tool windows.
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

void FloatingPanel::showEvent(QShowEvent* /*event*/) {
    // Shown again within moments of being hidden, the panel's window still counts as the one with the focus,
    // because Qt reports a loss of focus only after a while; but the widget was deactivated when it was
    // hidden. The focus that now arrives is then no change to Qt, and nothing would make the panel active
    // again.
    if (QGuiApplication::focusWindow() != nullptr && QGuiApplication::focusWindow() == windowHandle()) {
        QApplication::setActiveWindow(this);
    }
}

void FloatingPanel::closeEvent(QCloseEvent* event) {
    event->ignore();
    Q_EMIT closeRequested();
}

void FloatingPanel::hideEvent(QHideEvent* event) {
    // The panel is hidden nearly always, and its picture takes megabytes. It is painted anew when it is
    // shown.
    QBackingStore* picture = backingStore();
    if (picture != nullptr && !event->spontaneous()) {
        picture->resize(QSize(1, 1));
    }
}

} // namespace corvatto
