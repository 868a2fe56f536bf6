#include "TrayHost.h"

#include "support/Eventually.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusVariant>

#include <stdexcept>

namespace corvatto::test {

namespace {

const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString itemInterface = QStringLiteral("org.kde.StatusNotifierItem");
const QString itemPath = QStringLiteral("/StatusNotifierItem");
const QString menuPath = QStringLiteral("/MenuBar"); // Qt's
const QString menuInterface = QStringLiteral("com.canonical.dbusmenu");

} // namespace

TrayHost::TrayHost(const QByteArray& busAddress)
    : m_bus(QDBusConnection::connectToBus(QString::fromUtf8(busAddress), QStringLiteral("tray"))) {
    if (!m_bus.registerObject(QStringLiteral("/StatusNotifierWatcher"), this,
                              QDBusConnection::ExportAllContents) ||
        !m_bus.registerService(watcherName)) {
        throw std::runtime_error("no tray: " + m_bus.lastError().message().toStdString());
    }
}

TrayHost::~TrayHost() {
    QDBusConnection::disconnectFromBus(QStringLiteral("tray"));
}

void TrayHost::come() {
    m_isThere = true;
    Q_EMIT StatusNotifierHostRegistered();
}

QVariantList TrayHost::call(const QString& path, const QString& interface, const QString& method,
                            const QVariantList& arguments) {
    auto message = QDBusMessage::createMethodCall(m_item, path, interface, method);
    message.setArguments(arguments);
    // The item may ask the watcher something meanwhile.
    const QDBusPendingCall pending = m_bus.asyncCall(message);
    eventually([&] { return pending.isFinished(); });
    const QDBusMessage reply = pending.reply();
    if (reply.type() != QDBusMessage::ReplyMessage) {
        throw std::runtime_error((method + QStringLiteral(": ") + reply.errorMessage()).toStdString());
    }
    return reply.arguments();
}

QList<QSize> TrayHost::iconSizes() {
    QList<QSize> sizes;
    const auto variant = call(itemPath, QStringLiteral("org.freedesktop.DBus.Properties"),
                              QStringLiteral("Get"), {itemInterface, QStringLiteral("IconPixmap")})
                             .value(0)
                             .value<QDBusVariant>();
    const auto pixmaps = variant.variant().value<QDBusArgument>();
    for (pixmaps.beginArray(); !pixmaps.atEnd();) {
        QSize size;
        QByteArray argb;
        pixmaps.beginStructure();
        pixmaps >> size.rwidth() >> size.rheight() >> argb;
        pixmaps.endStructure();
        sizes.append(argb.count('\0') < argb.size() ? size : QSize()); // no size for a blank one
    }
    return sizes;
}

QStringList TrayHost::menu() {
    const auto layout = call(menuPath, menuInterface, QStringLiteral("GetLayout"), {0, -1, QStringList()})
                            .value(1)
                            .value<QDBusArgument>();
    const auto read = [](const QDBusArgument& node, QVariantMap& properties, QVariantList& children) {
        int id = 0;
        node.beginStructure();
        node >> id >> properties >> children;
        node.endStructure();
        return id;
    };
    QVariantMap properties;
    QVariantList children, none;
    read(layout, properties, children);
    QStringList titles;
    m_entries.clear();
    for (const QVariant& child : children) {
        m_entries.append(read(child.value<QDBusArgument>(), properties, none));
        titles.append(properties.value(QStringLiteral("label")).toString());
        const auto shortcuts = qdbus_cast<QList<QStringList>>(properties.value(QStringLiteral("shortcut")));
        for (const QStringList& keys : shortcuts) {
            titles.last() += QStringLiteral(" (%1)").arg(keys.join(u'+'));
        }
    }
    return titles;
}

void TrayHost::choose(const QString& title) {
    const qsizetype index = menu().indexOf(title);
    call(menuPath, menuInterface, QStringLiteral("Event"),
         {m_entries.value(index), QStringLiteral("clicked"), QVariant::fromValue(QDBusVariant(0)), 0U});
}

void TrayHost::click() {
    call(itemPath, itemInterface, QStringLiteral("Activate"), {0, 0});
}

} // namespace corvatto::test
