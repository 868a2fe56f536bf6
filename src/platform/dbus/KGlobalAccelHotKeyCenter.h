// The shortcut on Plasma: by org.kde.kglobalaccel, which KWin hosts and asks about every key.
//
// The same service can be started as a program of its own, by any application of KDE on any desktop; it then
// sees the keys of X11 programs only. So it counts where KWin runs, and is never started from here.
#pragma once

#include "platform/dbus/BusName.h"
#include "platform/dbus/HeldKey.h"
#include "platform/dbus/KGlobalAccelAction.h"
#include "platform/dbus/KeyNames.h"
#include "platform/dbus/SingleHotKeyCenter.h"

#include <memory>

namespace corvatto {

// Reports hotKeysUnavailableErr where KWin or the service is missing, or does not answer as it should. When
// the service starts anew, the shortcut is registered again. Main thread.
class KGlobalAccelHotKeyCenter : public SingleHotKeyCenter {
    Q_OBJECT

public:
    explicit KGlobalAccelHotKeyCenter(const QDBusConnection& bus);
    ~KGlobalAccelHotKeyCenter() override;

    // For the registrations that follow.
    void setKeyNames(const KeyNames& names) { m_keyNames = names; }

protected:
    void start(quint32 keyCode, quint32 modifiers, EventHotKeyID id) override;
    void stop() override;

private:
    void findService(const QString& compositor);
    void followService(const QString& owner);
    void request(const QString& owner);

    QDBusConnection m_bus;
    KeyNames m_keyNames;
    QList<int> m_combinations;
    // While something is registered, or about to be:
    std::unique_ptr<BusName> m_compositor;
    std::unique_ptr<BusName> m_service;
    std::unique_ptr<KGlobalAccelAction> m_action; // null while the service is away
    bool m_wasServed = false;
    HeldKey m_key;
};

} // namespace corvatto
