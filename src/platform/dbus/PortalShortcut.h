// The program's shortcut in one session with the desktop portal, org.freedesktop.portal.GlobalShortcuts.
//
// Asking takes three steps: whether the portal serves shortcuts at all, a session, and the shortcut, about
// which the desktop may ask the user. A method of the portal answers at once with the path of a request; the
// result is a signal of that request, which is listened to before the method is called.
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QObject>
#include <QTimer>
#include <QVariantMap>

#include <chrono>
#include <functional>

namespace corvatto {

// The receiver of a signal may destroy the session inside it. Main thread.
class PortalShortcut : public QObject {
    Q_OBJECT

public:
    // Starts to ask; this starts the portal, if it can be started. `preferredTrigger` is a wish, as in
    // "LOGO+SHIFT+v". Every step but the user's may take `replyLimit`.
    PortalShortcut(const QDBusConnection& bus, const QString& preferredTrigger,
                   std::chrono::milliseconds replyLimit);
    // Closes the session: the desktop releases the keys.
    ~PortalShortcut() override;

    // The portal's unique name; empty until it has answered.
    const QString& owner() const { return m_owner; }

Q_SIGNALS:
    // Triggered by what the desktop describes so. Again when that changes. Empty where it does not say.
    void granted(const QString& trigger);
    void refused();     // the user or the desktop has declined, or closed the session
    void unavailable(); // nobody serves shortcuts, or not as they should
    void pressed();
    void released();

private Q_SLOTS:
    void handleSession(uint code, const QVariantMap& results);
    void handleShortcuts(uint code, const QVariantMap& results);
    void handleChange(const QDBusMessage& message);
    void handlePress(const QDBusObjectPath& session, const QString& shortcut, qulonglong time,
                     const QVariantMap& options);
    void handleRelease(const QDBusObjectPath& session, const QString& shortcut, qulonglong time,
                       const QVariantMap& options);
    void handleClosing();

private:
    void findPortal();
    void createSession();
    void bindShortcuts();
    void request(const QString& method, const QVariantList& arguments, const QString& token,
                 const char* responseSlot);
    void whenAnswered(const QDBusPendingCall& call, std::function<void(const QDBusMessage&)> handle);
    void reportTrigger(const QVariant& shortcuts);
    QString objectPath(const QString& kind, const QString& token) const;

    QDBusConnection m_bus;
    QString m_preferredTrigger;
    std::chrono::milliseconds m_replyLimit;
    QString m_token; // distinguishes this session from others of the process
    QString m_owner;
    QDBusObjectPath m_session;
    QTimer m_sessionTimer; // runs until the session is there
};

} // namespace corvatto
