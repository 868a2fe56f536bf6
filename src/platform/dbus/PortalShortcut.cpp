#include "platform/dbus/PortalShortcut.h"

#include "platform/dbus/ProgramAction.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>

namespace corvatto {

namespace {

// A shortcut as the portal writes it.
struct PortalShortcutEntry {
    QString id;
    QVariantMap properties;
};

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString shortcutsInterface = QStringLiteral("org.freedesktop.portal.GlobalShortcuts");
const QString requestInterface = QStringLiteral("org.freedesktop.portal.Request");
const QString sessionInterface = QStringLiteral("org.freedesktop.portal.Session");

const QString shortcutsSignature = QStringLiteral("a(sa{sv})");

QDBusArgument& operator<<(QDBusArgument& argument, const PortalShortcutEntry& entry) {
    argument.beginStructure();
    argument << entry.id << entry.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, PortalShortcutEntry& entry) {
    argument.beginStructure();
    argument >> entry.id >> entry.properties;
    argument.endStructure();
    return argument;
}

QString newToken() {
    static quint32 count = 0;
    return QStringLiteral("corvatto%1").arg(++count);
}

} // namespace

PortalShortcut::PortalShortcut(const QDBusConnection& bus, const QString& preferredTrigger,
                               std::chrono::milliseconds replyLimit)
    : m_bus(bus), m_preferredTrigger(preferredTrigger), m_replyLimit(replyLimit), m_token(newToken()) {
    qDBusRegisterMetaType<PortalShortcutEntry>();
    qDBusRegisterMetaType<QList<PortalShortcutEntry>>();
    m_sessionTimer.setSingleShot(true);
    m_sessionTimer.callOnTimeout([this] { Q_EMIT unavailable(); });
    findPortal();
}

PortalShortcut::~PortalShortcut() {
    if (m_session.path().isEmpty()) {
        return;
    }
    const QDBusMessage close =
        QDBusMessage::createMethodCall(m_owner, m_session.path(), sessionInterface, QStringLiteral("Close"));
    m_bus.send(close);
}

QString PortalShortcut::objectPath(const QString& kind, const QString& token) const {
    const QString sender = m_bus.baseService().mid(1).replace(u'.', u'_');
    return portalPath + u'/' + kind + u'/' + sender + u'/' + token;
}

void PortalShortcut::whenAnswered(const QDBusPendingCall& call,
                                  std::function<void(const QDBusMessage&)> handle) {
    auto* answer = new QDBusPendingCallWatcher(call, this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [answer, handle = std::move(handle)] {
        answer->deleteLater();
        handle(answer->reply());
    });
}

void PortalShortcut::findPortal() {
    QDBusMessage question = QDBusMessage::createMethodCall(
        portalService, portalPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    question << shortcutsInterface << QStringLiteral("version");
    const auto limit = static_cast<int>(m_replyLimit.count());
    whenAnswered(m_bus.asyncCall(question, limit), [this](const QDBusMessage& reply) {
        if (reply.type() == QDBusMessage::ErrorMessage) {
            Q_EMIT unavailable();
            return;
        }
        m_owner = reply.service();
        createSession();
    });
}

void PortalShortcut::createSession() {
    // By the owner's unique name: for another name, Qt would wait for the bus to say who owns it.
    m_bus.connect(m_owner, portalPath, shortcutsInterface, QStringLiteral("ShortcutsChanged"), this,
                  SLOT(handleChange(QDBusMessage)));
    m_bus.connect(m_owner, portalPath, shortcutsInterface, QStringLiteral("Activated"), this,
                  SLOT(handlePress(QDBusObjectPath, QString, qulonglong, QVariantMap)));
    m_bus.connect(m_owner, portalPath, shortcutsInterface, QStringLiteral("Deactivated"), this,
                  SLOT(handleRelease(QDBusObjectPath, QString, qulonglong, QVariantMap)));
    m_session.setPath(objectPath(QStringLiteral("session"), m_token));
    m_bus.connect(m_owner, m_session.path(), sessionInterface, QStringLiteral("Closed"), this,
                  SLOT(handleClosing()));
    m_sessionTimer.start(m_replyLimit);
    const QString token = m_token + QStringLiteral("_session");
    const QVariantMap options{{QStringLiteral("handle_token"), token},
                              {QStringLiteral("session_handle_token"), m_token}};
    request(QStringLiteral("CreateSession"), {options}, token, SLOT(handleSession(uint, QVariantMap)));
}

void PortalShortcut::bindShortcuts() {
    const QList<PortalShortcutEntry> shortcuts{{programaction::id,
                                                {{QStringLiteral("description"), programaction::description},
                                                 {QStringLiteral("preferred_trigger"), m_preferredTrigger}}}};
    const QString token = m_token + QStringLiteral("_bind");
    const QString parentWindow;
    request(QStringLiteral("BindShortcuts"),
            {QVariant::fromValue(m_session), QVariant::fromValue(shortcuts), parentWindow,
             QVariantMap{{QStringLiteral("handle_token"), token}}},
            token, SLOT(handleShortcuts(uint, QVariantMap)));
}

void PortalShortcut::request(const QString& method, const QVariantList& arguments, const QString& token,
                             const char* responseSlot) {
    m_bus.connect(m_owner, objectPath(QStringLiteral("request"), token), requestInterface,
                  QStringLiteral("Response"), this, responseSlot);
    QDBusMessage message = QDBusMessage::createMethodCall(m_owner, portalPath, shortcutsInterface, method);
    message.setArguments(arguments);
    whenAnswered(m_bus.asyncCall(message), [this](const QDBusMessage& reply) {
        // The user may take any time.
        const bool isLate = reply.errorName() == QDBusError::errorString(QDBusError::NoReply);
        if (reply.type() == QDBusMessage::ErrorMessage && !isLate) {
            Q_EMIT unavailable();
        }
    });
}

void PortalShortcut::handleSession(uint code, const QVariantMap& /*results*/) {
    m_sessionTimer.stop();
    if (code != 0) {
        Q_EMIT unavailable();
        return;
    }
    bindShortcuts();
}

void PortalShortcut::handleShortcuts(uint code, const QVariantMap& results) {
    if (code != 0) {
        Q_EMIT refused();
        return;
    }
    reportTrigger(results.value(QStringLiteral("shortcuts")));
}

void PortalShortcut::handleChange(const QDBusMessage& message) {
    if (message.arguments().value(0).value<QDBusObjectPath>() == m_session) {
        reportTrigger(message.arguments().value(1));
    }
}

void PortalShortcut::reportTrigger(const QVariant& shortcuts) {
    const bool isList = shortcuts.userType() == qMetaTypeId<QDBusArgument>() &&
                        shortcuts.value<QDBusArgument>().currentSignature() == shortcutsSignature;
    const auto entries =
        isList ? qdbus_cast<QList<PortalShortcutEntry>>(shortcuts) : QList<PortalShortcutEntry>();
    for (const PortalShortcutEntry& entry : entries) {
        if (entry.id == programaction::id) {
            Q_EMIT granted(entry.properties.value(QStringLiteral("trigger_description")).toString());
            return;
        }
    }
    Q_EMIT refused();
}

void PortalShortcut::handlePress(const QDBusObjectPath& session, const QString& shortcut, qulonglong /*time*/,
                                 const QVariantMap& /*options*/) {
    if (session == m_session && shortcut == programaction::id) {
        Q_EMIT pressed();
    }
}

void PortalShortcut::handleRelease(const QDBusObjectPath& session, const QString& shortcut,
                                   qulonglong /*time*/, const QVariantMap& /*options*/) {
    if (session == m_session && shortcut == programaction::id) {
        Q_EMIT released();
    }
}

void PortalShortcut::handleClosing() {
    m_session = {};
    Q_EMIT refused();
}

} // namespace corvatto
