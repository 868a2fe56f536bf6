// A message bus of a test's own, the program's connection to it, and a desktop on another connection.
#pragma once

#include "endtoend/Process.h"
#include "platform/HotKeyCenter.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>
#include <optional>

namespace corvatto::test {

// A combination as the services take it, and what the tests ask for: Super+Shift+V.
constexpr quint32 keyCodeV = 9;
constexpr quint32 commandShift = commandKey | shiftKey;

// A connection to the bus, under a unique name of its own.
class BusConnection {
public:
    explicit BusConnection(const QString& address);
    ~BusConnection() { QDBusConnection::disconnectFromBus(m_name); }
    BusConnection(const BusConnection&) = delete;
    BusConnection& operator=(const BusConnection&) = delete;

    QDBusConnection bus() const { return QDBusConnection(m_name); }

private:
    const QString m_name;
};

// A service of the desktop, which answers each call as a subclass says.
class FakeService : public QDBusVirtualObject {
public:
    // Appears on the bus under those names.
    FakeService(const QString& address, const QStringList& names);

    // Goes away and comes back, as another process.
    void leave() { m_connection.reset(); }
    void appear();

    // Sends a signal to everybody.
    void send(const QString& path, const QString& interface, const QString& name,
              const QVariantList& arguments);

    QStringList calls; // the methods that were called, in order

    QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

protected:
    // The answer to a call; nothing leaves it without one.
    virtual std::optional<QDBusMessage> answer(const QDBusMessage& call) = 0;

private:
    const QString m_address;
    const QStringList m_names;
    std::unique_ptr<BusConnection> m_connection;
};

class BusTest : public ::testing::Test {
protected:
    BusTest();

    // Registers the combination, and collects what is reported about it.
    void registerHotKey(HotKeyCenter& center, quint32 keyCode = keyCodeV, quint32 modifiers = commandShift);
    bool soonReported(HotKeyStatus status, const QString& trigger = {});

    QTemporaryDir services; // of those that the bus can start
    std::optional<Process> daemon;
    QString address;
    std::optional<BusConnection> program;
    EventHotKeyRef hotKey = 0;
    QList<std::pair<HotKeyStatus, QString>> reports; // that the test has not looked for yet
    int presses = 0;
};

} // namespace corvatto::test
