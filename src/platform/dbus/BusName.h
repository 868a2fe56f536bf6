// Who owns a name on a message bus, now and from now on.
//
// QDBusServiceWatcher and signals that are connected by the name of a service make the bus answer while the
// caller waits. This asks without waiting, and never has the bus start a service.
#pragma once

#include <QDBusConnection>
#include <QObject>

#include <optional>

namespace corvatto {

// Main thread.
class BusName : public QObject {
    Q_OBJECT

public:
    // Asks at once.
    BusName(const QDBusConnection& bus, const QString& name);

Q_SIGNALS:
    // From the event loop, for the answer and for every change: the owner's unique name, empty without one.
    void ownerKnown(const QString& owner);

private Q_SLOTS:
    void followChange(const QString& name, const QString& before, const QString& owner);

private:
    void setOwner(const QString& owner);

    QDBusConnection m_bus;
    std::optional<QString> m_owner; // absent until the answer comes
};

} // namespace corvatto
