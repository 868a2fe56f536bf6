#include "ui/ContextMenu.h"

#include "ui/Appearance.h"

#include <QEvent>
#include <QWindow>

namespace corvatto {

ContextMenu::ContextMenu(QWidget* parent) : QMenu(parent) {
    setAttribute(Qt::WA_DeleteOnClose);
    setPalette(appearance::lightPalette());
    setFont(appearance::systemFont(appearance::bodySize));
    parent->window()->installEventFilter(this);
}

void ContextMenu::open(const QPoint& globalPosition) {
    popup(globalPosition);
    // Qt grabs the keyboard for a menu, and while it is grabbed no global shortcut arrives. The keys reach
    // the menu without the grab, too, through the window that it belongs to.
    windowHandle()->setKeyboardGrabEnabled(false);
}

bool ContextMenu::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Hide) {
        close();
    }
    return QMenu::eventFilter(watched, event);
}

} // namespace corvatto
