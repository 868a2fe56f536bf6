#include "platform/dbus/KGlobalAccelAction.h"

#include "platform/dbus/ProgramAction.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QKeySequence>

#include <optional>

namespace corvatto {

namespace {

// A sequence of up to four combinations, of which a shortcut of this program has one.
struct KeySequence {
    int combination = 0;
};

const QString servicePath = QStringLiteral("/kglobalaccel");
const QString serviceInterface = QStringLiteral("org.kde.KGlobalAccel");
const QString componentInterface = QStringLiteral("org.kde.kglobalaccel.Component");

// The service derives the path from the component's name, which has letters only.
const QString componentPath = QStringLiteral("/component/") + programaction::programId;

const QString sequencesSignature = QStringLiteral("a(ai)");

// Flags of setShortcutKeys(): the action is present from now on, and the combinations are those given here
// and not what the service has stored.
constexpr uint setPresent = 2;
constexpr uint noAutoloading = 4;

QStringList actionId() {
    using namespace programaction;
    return {programId, id, programName, description};
}

QDBusArgument& operator<<(QDBusArgument& argument, const KeySequence& sequence) {
    argument.beginStructure();
    argument << QList<int>{sequence.combination, 0, 0, 0};
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, KeySequence& sequence) {
    QList<int> combinations;
    argument.beginStructure();
    argument >> combinations;
    argument.endStructure();
    sequence.combination = combinations.value(0);
    return argument;
}

// The combinations that the service has set. Absent when the argument is something else.
std::optional<QList<int>> combinationsFrom(const QVariant& value) {
    if (value.userType() != qMetaTypeId<QDBusArgument>() ||
        value.value<QDBusArgument>().currentSignature() != sequencesSignature) {
        return std::nullopt;
    }
    QList<int> combinations;
    for (const KeySequence& sequence : qdbus_cast<QList<KeySequence>>(value)) {
        if (sequence.combination != 0) { // stands for one that was not granted
            combinations.append(sequence.combination);
        }
    }
    return combinations;
}

} // namespace

KGlobalAccelAction::KGlobalAccelAction(const QDBusConnection& bus, const QString& owner,
                                       const QList<int>& combinations)
    : m_bus(bus), m_owner(owner), m_combinations(combinations) {
    qDBusRegisterMetaType<KeySequence>();
    qDBusRegisterMetaType<QList<KeySequence>>();
    m_bus.connect(m_owner, servicePath, serviceInterface, QStringLiteral("yourShortcutsChanged"), this,
                  SLOT(followChange(QDBusMessage)));
    m_bus.connect(m_owner, componentPath, componentInterface, QStringLiteral("globalShortcutPressed"), this,
                  SLOT(handlePress(QString, QString, qlonglong)));
    m_bus.connect(m_owner, componentPath, componentInterface, QStringLiteral("globalShortcutReleased"), this,
                  SLOT(handleRelease(QString, QString, qlonglong)));
    call(QStringLiteral("doRegister"), {actionId()});
    requestCombinations();
}

KGlobalAccelAction::~KGlobalAccelAction() {
    using namespace programaction;
    call(QStringLiteral("unregister"), {programId, id});
    // The process may end at once. Disconnecting is done by the thread of the bus after what it has to send,
    // and waits for that thread, not for the service: the call above is then on its way.
    m_bus.disconnect(m_owner, servicePath, serviceInterface, QStringLiteral("yourShortcutsChanged"), this,
                     SLOT(followChange(QDBusMessage)));
}

void KGlobalAccelAction::call(const QString& method, const QVariantList& arguments) {
    QDBusMessage message = QDBusMessage::createMethodCall(m_owner, servicePath, serviceInterface, method);
    message.setArguments(arguments);
    m_bus.send(message);
}

void KGlobalAccelAction::requestCombinations() {
    QList<KeySequence> sequences;
    for (const int combination : m_combinations) {
        sequences.append(KeySequence{combination});
    }
    QDBusMessage message = QDBusMessage::createMethodCall(m_owner, servicePath, serviceInterface,
                                                          QStringLiteral("setShortcutKeys"));
    message.setArguments({actionId(), QVariant::fromValue(sequences), setPresent | noAutoloading});
    auto* answer = new QDBusPendingCallWatcher(m_bus.asyncCall(message), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        answer->deleteLater();
        const auto set = combinationsFrom(answer->reply().arguments().value(0));
        if (answer->isError() || !set) {
            Q_EMIT unavailable();
        } else if (set->value(0) != m_combinations.value(0)) {
            Q_EMIT taken();
        } else {
            m_combinations = *set;
            Q_EMIT granted({});
        }
    });
}

void KGlobalAccelAction::followChange(const QDBusMessage& message) {
    const QStringList action = message.arguments().value(0).toStringList();
    const auto set = combinationsFrom(message.arguments().value(1));
    if (!set || action.value(0) != programaction::programId || action.value(1) != programaction::id) {
        return;
    }
    if (set->isEmpty()) {
        Q_EMIT taken();
        return;
    }
    QStringList names;
    for (const int combination : *set) {
        names << QKeySequence(combination).toString(QKeySequence::NativeText);
    }
    Q_EMIT granted(*set == m_combinations ? QString() : names.join(u", "));
}

void KGlobalAccelAction::handlePress(const QString& /*component*/, const QString& action,
                                     qlonglong /*time*/) {
    if (action == programaction::id) {
        Q_EMIT pressed();
    }
}

void KGlobalAccelAction::handleRelease(const QString& /*component*/, const QString& action,
                                       qlonglong /*time*/) {
    if (action == programaction::id) {
        Q_EMIT released();
    }
}

} // namespace corvatto
