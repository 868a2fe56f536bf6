#include "app/StatusItem.h"

#include "ui/Appearance.h"
#include "ui/Symbols.h"

#include <QIcon>
#include <QPainter>

#include <algorithm>

namespace corvatto {
namespace {

QPixmap paperclipPixmap(int side) {
    const QString name = QStringLiteral("paperclip");
    // The symbol fills the pixmap but for a margin for the edge.
    const double edge = std::max(1.0, side / 32.0);
    const double pointSize = (side - 2 * edge) / symbols::size(name, 1).height();
    const QPixmap light = symbols::pixmap(name, pointSize, QColor(255, 255, 255, 150), 1);
    const QPixmap dark = symbols::pixmap(name, pointSize, QColor(0x30, 0x34, 0x3A), 1);

    QPixmap pixmap(side, side);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QPointF origin((side - dark.width()) / 2.0, (side - dark.height()) / 2.0);
    for (const double x : {-edge, 0.0, edge}) {
        for (const double y : {-edge, 0.0, edge}) {
            painter.drawPixmap(origin + QPointF(x, y), light);
        }
    }
    painter.drawPixmap(origin, dark);
    return pixmap;
}

// Dark with a light edge, to be visible on light and on dark trays.
QIcon paperclipIcon() {
    QIcon icon;
    for (const int side : {16, 22, 24, 32, 48, 64}) {
        icon.addPixmap(paperclipPixmap(side));
    }
    return icon;
}

} // namespace

StatusItem::StatusItem(Tray& tray, Actions actions) : m_tray(tray), m_actions(std::move(actions)) {
    m_menu.setFont(appearance::systemFont(13)); // with Chinese forms of the characters in every locale
    m_menu.addAction(QStringLiteral("显示历史"), m_actions.showHistory);
    m_menu.addSeparator();
    m_menu.addAction(QStringLiteral("清空所有历史"), m_actions.clearAll);
    m_menu.addSeparator();
    m_menu.addAction(QStringLiteral("偏好设置..."), m_actions.openPreferences)
        ->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma));
    m_menu.addAction(QStringLiteral("关于"), m_actions.showAbout);
    m_menu.addSeparator();
    m_menu.addAction(QStringLiteral("退出"), m_actions.quit)->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    QObject::connect(&m_tray, &Tray::available, &m_menu, [this] { show(); });
    m_tray.startWatching();
}

void StatusItem::show() {
    m_icon.emplace(paperclipIcon());
    m_icon->setContextMenu(&m_menu);
    m_icon->setToolTip(QStringLiteral("Corvatto"));
    // Any click opens the menu, not only one with the secondary button. Where a program cannot open it, the
    // click does what is most likely wanted of the menu.
    QObject::connect(&*m_icon, &QSystemTrayIcon::activated, &m_menu,
                     [this](QSystemTrayIcon::ActivationReason reason) {
                         if (reason == QSystemTrayIcon::Trigger && !m_tray.openMenu(m_menu)) {
                             m_actions.showHistory();
                         }
                     });
    m_icon->show();
}

} // namespace corvatto
