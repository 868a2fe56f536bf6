// The shortcut by the desktop portal: the desktop, and on most desktops the user, decides which keys it has.
#pragma once

#include "platform/dbus/BusName.h"
#include "platform/dbus/HeldKey.h"
#include "platform/dbus/KeyNames.h"
#include "platform/dbus/PortalShortcut.h"
#include "platform/dbus/SingleHotKeyCenter.h"

#include <memory>

namespace corvatto {

// Reports hotKeysUnavailableErr where no portal serves shortcuts, or it stays silent. When the portal starts
// anew, the shortcut is asked for again; it is not started again from here, because the session may be
// ending. Main thread.
class PortalHotKeyCenter : public SingleHotKeyCenter {
    Q_OBJECT

public:
    // As long as the bus itself gives a service for its start.
    static constexpr std::chrono::seconds defaultReplyLimit{25};

    explicit PortalHotKeyCenter(const QDBusConnection& bus,
                                std::chrono::milliseconds replyLimit = defaultReplyLimit);
    ~PortalHotKeyCenter() override;

    // For the registrations that follow.
    void setKeyNames(const KeyNames& names) { m_keyNames = names; }

protected:
    void start(quint32 keyCode, quint32 modifiers, EventHotKeyID id) override;
    void stop() override;

private:
    void followPortal(const QString& owner);
    void request();

    QDBusConnection m_bus;
    KeyNames m_keyNames;
    std::chrono::milliseconds m_replyLimit;
    QString m_preferredTrigger;
    // While something is registered, or about to be:
    std::unique_ptr<BusName> m_name;
    std::unique_ptr<PortalShortcut> m_shortcut; // null while the portal is away
    HeldKey m_key;
};

} // namespace corvatto
