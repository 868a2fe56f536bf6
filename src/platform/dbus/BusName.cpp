#include "platform/dbus/BusName.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace corvatto {
namespace {

const QString busService = QStringLiteral("org.freedesktop.DBus");
const QString busPath = QStringLiteral("/org/freedesktop/DBus");

} // namespace

BusName::BusName(const QDBusConnection& bus, const QString& name) : m_bus(bus) {
    // Without the sender: for a well-known name, Qt would wait for the bus to say who owns it.
    m_bus.connect(QString(), busPath, busService, QStringLiteral("NameOwnerChanged"), {name},
                  QStringLiteral("sss"), this, SLOT(followChange(QString, QString, QString)));
    QDBusMessage question =
        QDBusMessage::createMethodCall(busService, busPath, busService, QStringLiteral("GetNameOwner"));
    question << name;
    auto* answer = new QDBusPendingCallWatcher(m_bus.asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        answer->deleteLater();
        const QDBusPendingReply<QString> reply = *answer;
        setOwner(reply.isValid() ? reply.value() : QString()); // an error says that nobody owns it
    });
}

void BusName::followChange(const QString& /*name*/, const QString& /*before*/, const QString& owner) {
    setOwner(owner);
}

void BusName::setOwner(const QString& owner) {
    if (m_owner != owner) {
        m_owner = owner;
        Q_EMIT ownerKnown(owner);
    }
}

} // namespace corvatto
