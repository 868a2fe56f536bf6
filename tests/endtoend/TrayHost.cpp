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

QVariant TrayHost::itemProperty(const char* name) {
    return call(itemPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"),
                {itemInterface, QString::fromLatin1(name)})
        .value(0)
        .value<QDBusVariant>()
        .variant();
}

QList<QSize> TrayHost::iconSizes() {
    QList<QSize> sizes;
    const auto pixmaps = itemProperty("IconPixmap").value<QDBusArgument>();
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

QList<TrayHost::Entry> TrayHost::entries() {
    const QString path = itemProperty("Menu").value<QDBusObjectPath>().path();
    const auto layout = call(path, menuInterface, QStringLiteral("GetLayout"), {0, -1, QStringList()})
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
    QList<Entry> found;
    for (const QVariant& child : children) {
        const int id = read(child.value<QDBusArgument>(), properties, none);
        QString title = properties.value(QStringLiteral("label")).toString();
        if (properties.value(QStringLiteral("type")) == QStringLiteral("separator")) {
            title = QStringLiteral("-");
        }
        QList<QStringList> shortcut;
        if (properties.contains(QStringLiteral("shortcut"))) {
            properties.value(QStringLiteral("shortcut")).value<QDBusArgument>() >> shortcut;
            title += QStringLiteral(" (%1)").arg(shortcut.value(0).join(u'+'));
        }
        found.append({id, title});
    }
    return found;
}

QStringList TrayHost::menu() {
    QStringList titles;
    for (const Entry& entry : entries()) {
        titles.append(entry.title);
    }
    return titles;
}

void TrayHost::choose(const QString& title) {
    for (const Entry& entry : entries()) {
        if (entry.title.startsWith(title)) {
            const QString path = itemProperty("Menu").value<QDBusObjectPath>().path();
            call(path, menuInterface, QStringLiteral("Event"),
                 {entry.id, QStringLiteral("clicked"), QVariant::fromValue(QDBusVariant(0)), 0U});
        }
    }
}

void TrayHost::click() {
    call(itemPath, itemInterface, QStringLiteral("Activate"), {0, 0});
}

} // namespace corvatto::test
