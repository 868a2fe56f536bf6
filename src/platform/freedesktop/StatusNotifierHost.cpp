#include "platform/freedesktop/StatusNotifierHost.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

namespace corvatto {
namespace {

// The service with which programs register their items. It can run before any tray shows them.
const QString watcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");

} // namespace

void StatusNotifierHost::startWatching() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    auto* watcher =
        new QDBusServiceWatcher(watcherService, bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this, &StatusNotifierHost::query);
    bus.connect(watcherService, watcherPath, watcherService, QStringLiteral("StatusNotifierHostRegistered"),
                this, SLOT(query()));
    query();
}

void StatusNotifierHost::query() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) { // no answer would come, not even an error
        QMetaObject::invokeMethod(
            this, [this] { Q_EMIT answered(Status::Absent); }, Qt::QueuedConnection);
        return;
    }
    QDBusMessage question = QDBusMessage::createMethodCall(watcherService, watcherPath,
                                                           QStringLiteral("org.freedesktop.DBus.Properties"),
                                                           QStringLiteral("Get"));
    question << watcherService << QStringLiteral("IsStatusNotifierHostRegistered");
    question.setAutoStartService(false);
    auto* answer = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        answer->deleteLater();
        receiveReply(*answer);
    });
}

void StatusNotifierHost::receiveReply(const QDBusPendingCall& call) {
    const QDBusPendingReply<QDBusVariant> reply = call;
    const auto error = reply.error().type();
    if (error == QDBusError::NoReply || error == QDBusError::Timeout || error == QDBusError::TimedOut) {
        Q_EMIT answered(Status::Unresponsive);
        return;
    }
    // Any other error means that there is no such service, or that it does not know the property.
    const bool hasHost = reply.isValid() && reply.value().variant().toBool();
    Q_EMIT answered(hasHost ? Status::Present : Status::Absent);
}

} // namespace corvatto
