// The program's shortcut at one run of Plasma's shortcut service, org.kde.kglobalaccel.
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QList>
#include <QObject>

namespace corvatto {

// The receiver of a signal may destroy the action inside it. Main thread.
class KGlobalAccelAction : public QObject {
    Q_OBJECT

public:
    // Starts to register. `owner` is the service's unique name; any of `combinations`, which are Qt keys with
    // Qt modifiers, is to trigger the action. It is granted if the first one is.
    KGlobalAccelAction(const QDBusConnection& bus, const QString& owner, const QList<int>& combinations);
    // Gives the combinations back. The service would swallow their keys after the program's end, and keep
    // them from others.
    ~KGlobalAccelAction() override;

Q_SIGNALS:
    // The action is triggered as was asked, or, where `trigger` is not empty, by that: the user may choose
    // another combination in the desktop's settings at any time.
    void granted(const QString& trigger);
    void taken();       // by another program's shortcut, or from us by the user
    void unavailable(); // the service does not do what it should
    void pressed();     // also for every repeat of a held key
    void released();

private Q_SLOTS:
    void followChange(const QDBusMessage& message);
    void handlePress(const QString& component, const QString& action, qlonglong time);
    void handleRelease(const QString& component, const QString& action, qlonglong time);

private:
    void call(const QString& method, const QVariantList& arguments);
    void requestCombinations();

    QDBusConnection m_bus;
    QString m_owner;
    QList<int> m_combinations; // asked for, then those granted
};

} // namespace corvatto
