#include "BusTest.h"

#include "support/Files.h"
#include "support/Printing.h"

namespace corvatto::test {
namespace {

constexpr const char* busConfiguration =
    R"(<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen><servicedir>%1</servicedir>
    <policy context="default"><allow send_destination="*"/><allow receive_sender="*"/><allow own="*"/></policy>
    </busconfig>)";

QString newConnectionName() {
    static int count = 0;
    return QStringLiteral("test%1").arg(++count);
}

} // namespace

BusConnection::BusConnection(const QString& address) : m_name(newConnectionName()) {
    EXPECT_TRUE(QDBusConnection::connectToBus(address, m_name).isConnected());
}

FakeService::FakeService(const QString& address, const QStringList& names)
    : m_address(address), m_names(names) {
    appear();
}

void FakeService::appear() {
    m_connection = std::make_unique<BusConnection>(m_address);
    m_connection->bus().registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath);
    for (const QString& name : m_names) {
        EXPECT_TRUE(m_connection->bus().registerService(name));
    }
}

void FakeService::send(const QString& path, const QString& interface, const QString& name,
                       const QVariantList& arguments) {
    QDBusMessage signal = QDBusMessage::createSignal(path, interface, name);
    signal.setArguments(arguments);
    m_connection->bus().send(signal);
}

bool FakeService::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    calls << message.member();
    message.setDelayedReply(true);
    if (const auto reply = answer(message)) {
        connection.send(*reply);
    }
    return true;
}

BusTest::BusTest() {
    const QString configuration = services.filePath(QStringLiteral("bus.conf"));
    writeFile(configuration, QString::fromLatin1(busConfiguration).arg(services.path()).toUtf8());
    daemon.emplace("dbus-daemon",
                   QByteArrayList{"--nofork", "--print-address", "--config-file=" + configuration.toUtf8()},
                   QProcessEnvironment::systemEnvironment(), true);
    EXPECT_TRUE(soon([this] { return daemon->output().endsWith('\n'); }));
    address = QString::fromUtf8(daemon->output().trimmed());
    program.emplace(address);
}

void BusTest::registerHotKey(HotKeyCenter& center, quint32 keyCode, quint32 modifiers) {
    EventHandlerRef handler = 0;
    const auto count = [this] {
        ++presses;
        return noErr;
    };
    EXPECT_EQ(center.installEventHandler(count, handler), noErr);
    hotKey = center.registerEventHotKey(keyCode, modifiers, {1, 1},
                                        [this](HotKeyStatus status, const QString& trigger) {
                                            reports.append({status, trigger});
                                        });
}

bool BusTest::soonReported(HotKeyStatus status, const QString& trigger) {
    const std::pair expected(status, trigger);
    EXPECT_TRUE(eventually([this] { return !reports.isEmpty(); }));
    EXPECT_EQ(reports.value(0), expected);
    return !reports.isEmpty() && reports.takeFirst() == expected;
}

} // namespace corvatto::test
