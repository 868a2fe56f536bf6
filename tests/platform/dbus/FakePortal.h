// A desktop portal that serves global shortcuts.
#pragma once

#include "BusTest.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>

namespace corvatto::test {

class FakePortal : public FakeService {
public:
    enum class User { Grants, Declines, Thinks };

    explicit FakePortal(const QString& address)
        : FakeService(prepared(address), {QStringLiteral("org.freedesktop.portal.Desktop")}) {}

    User user = User::Grants;
    QString trigger = QStringLiteral("Press <Super>V"); // what the user grants
    bool servesShortcuts = true;
    bool opensSessions = true; // or stays silent
    QString wish;              // the trigger that was asked for
    QDBusObjectPath session;   // the open one

    void press(const QString& shortcut = QStringLiteral("toggle")) { sendKey("Activated", shortcut); }
    void release() { sendKey("Deactivated", QStringLiteral("toggle")); }
    void change(const QString& other) {
        send(path, shortcuts, QStringLiteral("ShortcutsChanged"),
             {QVariant::fromValue(session), QVariant::fromValue(granted(other))});
    }
    void close() {
        send(session.path(), QStringLiteral("org.freedesktop.portal.Session"), QStringLiteral("Closed"), {});
    }

protected:
    std::optional<QDBusMessage> answer(const QDBusMessage& call) override {
        const QString method = call.member();
        if (method == QLatin1String("Get")) {
            return servesShortcuts
                       ? call.createReply(QVariant::fromValue(QDBusVariant(1u)))
                       : call.createErrorReply(QDBusError::InvalidArgs, QStringLiteral("No such interface"));
        }
        if (method == QLatin1String("Close")) {
            if (call.path() == session.path()) {
                session = {};
            }
            return call.createReply();
        }
        const auto options = qdbus_cast<QVariantMap>(call.arguments().last());
        const QString request = handle(call, QStringLiteral("request"), options, "handle_token");
        if (method == QLatin1String("CreateSession") && opensSessions) {
            session.setPath(handle(call, QStringLiteral("session"), options, "session_handle_token"));
            respond(request, 0, {{QStringLiteral("session_handle"), session.path()}});
        } else if (method == QLatin1String("BindShortcuts")) {
            EXPECT_EQ(call.arguments()[0].value<QDBusObjectPath>(), session);
            const auto wanted = qdbus_cast<QList<Shortcut>>(call.arguments()[1]);
            wish = wanted.value(0).second.value(QStringLiteral("preferred_trigger")).toString();
            if (user == User::Grants) {
                respond(request, 0, {{QStringLiteral("shortcuts"), QVariant::fromValue(granted(trigger))}});
            } else if (user == User::Declines) {
                respond(request, 1, {});
            }
        }
        return call.createReply(QVariant::fromValue(QDBusObjectPath(request)));
    }

private:
    using Shortcut = std::pair<QString, QVariantMap>; // its name and its properties

    const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
    const QString shortcuts = QStringLiteral("org.freedesktop.portal.GlobalShortcuts");

    static QString prepared(const QString& address) {
        qDBusRegisterMetaType<Shortcut>();
        qDBusRegisterMetaType<QList<Shortcut>>();
        return address;
    }
    static QList<Shortcut> granted(const QString& trigger) {
        return {{QStringLiteral("toggle"), {{QStringLiteral("trigger_description"), trigger}}}};
    }
    QString handle(const QDBusMessage& call, const QString& kind, const QVariantMap& options,
                   const char* token) const {
        const QString sender = call.service().mid(1).replace(u'.', u'_');
        return path + u'/' + kind + u'/' + sender + u'/' +
               options.value(QString::fromLatin1(token)).toString();
    }
    void respond(const QString& request, uint code, const QVariantMap& results) {
        send(request, QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Response"),
             {code, results});
    }
    void sendKey(const char* signal, const QString& shortcut) {
        send(path, shortcuts, QString::fromLatin1(signal),
             {QVariant::fromValue(session), shortcut, qulonglong{0}, QVariantMap()});
    }
};

} // namespace corvatto::test
