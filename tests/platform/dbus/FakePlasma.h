// Plasma's shortcut service, as KWin hosts it.
#pragma once

#include "BusTest.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QKeyCombination>

namespace corvatto::test {

// Super, Shift and V.
inline const int superShiftV = QKeyCombination(Qt::META | Qt::SHIFT, Qt::Key_V).toCombined();

struct Sequence {
    QList<int> combinations;
};

inline QDBusArgument& operator<<(QDBusArgument& argument, const Sequence& sequence) {
    argument.beginStructure();
    argument << sequence.combinations;
    argument.endStructure();
    return argument;
}

inline const QDBusArgument& operator>>(const QDBusArgument& argument, Sequence& sequence) {
    argument.beginStructure();
    argument >> sequence.combinations;
    argument.endStructure();
    return argument;
}

class FakePlasma : public FakeService {
public:
    explicit FakePlasma(const QString& address,
                        const QStringList& names = {QStringLiteral("org.kde.KWin"),
                                                    QStringLiteral("org.kde.kglobalaccel")})
        : FakeService(prepared(address), names) {}

    QList<int> taken;    // by others
    QList<int> set;      // for the program
    bool isSane = true;  // answers as the interface says
    QStringList program; // how it has introduced itself

    void press() { sendKey("globalShortcutPressed", "toggle"); }
    void release() { sendKey("globalShortcutReleased", "toggle"); }
    void sendKey(const char* signal, const char* action) {
        send(QStringLiteral("/component/corvatto"), QStringLiteral("org.kde.kglobalaccel.Component"),
             QString::fromLatin1(signal),
             {QStringLiteral("corvatto"), QString::fromLatin1(action), qlonglong{0}});
    }
    // The user chooses other combinations in the settings.
    void change(const QList<int>& combinations) {
        send(QStringLiteral("/kglobalaccel"), QStringLiteral("org.kde.KGlobalAccel"),
             QStringLiteral("yourShortcutsChanged"),
             {QStringList{QStringLiteral("corvatto"), QStringLiteral("toggle")}, sequences(combinations)});
    }

protected:
    std::optional<QDBusMessage> answer(const QDBusMessage& call) override {
        if (call.member() == QLatin1String("setShortcutKeys")) {
            program = call.arguments()[0].toStringList();
            set.clear();
            for (const Sequence& sequence : qdbus_cast<QList<Sequence>>(call.arguments()[1])) {
                EXPECT_EQ(sequence.combinations.size(), 4);
                const int combination = sequence.combinations.value(0);
                set.append(taken.contains(combination) ? 0 : combination);
            }
            return call.createReply(isSane ? sequences(set) : QVariant(QStringLiteral("yes")));
        }
        if (call.member() == QLatin1String("unregister")) {
            set.clear();
            return call.createReply(true);
        }
        return call.createReply();
    }

private:
    static QString prepared(const QString& address) {
        qDBusRegisterMetaType<Sequence>();
        qDBusRegisterMetaType<QList<Sequence>>();
        return address;
    }
    static QVariant sequences(const QList<int>& combinations) {
        QList<Sequence> list;
        for (const int combination : combinations) {
            list.append(Sequence{{combination, 0, 0, 0}});
        }
        return QVariant::fromValue(list);
    }
};

} // namespace corvatto::test
