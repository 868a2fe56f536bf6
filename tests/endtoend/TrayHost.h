// A tray as desktops have it, on a session bus: the watcher that programs announce their items to, and the
// host that asks each item for its icon and its menu.
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QSize>
#include <QVariant>

namespace corvatto::test {

class TrayHost : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ isThere)
    Q_PROPERTY(int ProtocolVersion READ protocolVersion)

public:
    // Takes the watcher's name. Throws std::runtime_error when it cannot. It is given back at the end.
    explicit TrayHost(const QByteArray& busAddress);
    ~TrayHost() override;

    bool isThere() const { return m_isThere; }
    void come(); // until then there is a watcher, but no host
    int protocolVersion() const { return 0; }

    bool hasItem() const { return !m_item.isEmpty(); }
    QList<QSize> iconSizes();
    // The titles from the top, each with its shortcut in brackets; that of a separator is empty.
    QStringList menu();
    void choose(const QString& title);
    void click(); // on the icon

public Q_SLOTS:
    void RegisterStatusNotifierItem(const QString& service) { m_item = service; }

Q_SIGNALS:
    void StatusNotifierHostRegistered();

private:
    QVariantList call(const QString& path, const QString& interface, const QString& method,
                      const QVariantList& arguments);

    QDBusConnection m_bus;
    QString m_item;       // the service of the item announced last
    QList<int> m_entries; // of the menu, as last seen
    bool m_isThere = false;
};

} // namespace corvatto::test
