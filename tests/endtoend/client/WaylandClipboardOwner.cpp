#include "ClipboardOwner.h"

#include "wlr-data-control-unstable-v1-client-protocol.h"

#include <QSocketNotifier>

#include <csignal>
#include <cstring>
#include <unistd.h>

namespace corvatto::test {

namespace {

class WaylandClipboardOwner : public ClipboardOwner {
public:
    explicit WaylandClipboardOwner(const Wishes& wishes)
        : ClipboardOwner(wishes), m_display(wl_display_connect(nullptr)),
          m_notifier(wl_display_get_fd(m_display), QSocketNotifier::Read) {
        signal(SIGPIPE, SIG_IGN); // of those who read no further
        static constexpr wl_registry_listener globals{
            [](void* data, wl_registry* registry, uint32_t name, const char* interface, uint32_t) {
                const auto self = static_cast<WaylandClipboardOwner*>(data);
                if (std::strcmp(interface, wl_seat_interface.name) == 0) {
                    self->m_seat =
                        static_cast<wl_seat*>(wl_registry_bind(registry, name, &wl_seat_interface, 1));
                } else if (std::strcmp(interface, zwlr_data_control_manager_v1_interface.name) == 0) {
                    self->m_manager = static_cast<zwlr_data_control_manager_v1*>(
                        wl_registry_bind(registry, name, &zwlr_data_control_manager_v1_interface, 1));
                }
            },
            [](void*, wl_registry*, uint32_t) {
            }};
        wl_registry_add_listener(wl_display_get_registry(m_display), &globals, this);
        wl_display_roundtrip(m_display);

        static constexpr zwlr_data_control_source_v1_listener requests{
            [](void* data, zwlr_data_control_source_v1*, const char* target, int32_t pipe) {
                static_cast<WaylandClipboardOwner*>(data)->serve(target, pipe);
            },
            [](void* data, zwlr_data_control_source_v1*) {
                static_cast<WaylandClipboardOwner*>(data)->lose();
            }};
        const auto source = zwlr_data_control_manager_v1_create_data_source(m_manager);
        zwlr_data_control_source_v1_add_listener(source, &requests, this);
        for (const QByteArray& target : targets()) {
            zwlr_data_control_source_v1_offer(source, target.constData());
            wl_display_roundtrip(m_display); // or thousands would not fit into the connection
        }
        zwlr_data_control_device_v1_set_selection(
            zwlr_data_control_manager_v1_get_data_device(m_manager, m_seat), source);
        QObject::connect(&m_notifier, &QSocketNotifier::activated, [this] {
            if (wl_display_dispatch(m_display) < 0) {
                std::exit(3); // the compositor has gone
            }
            wl_display_flush(m_display);
        });
        wl_display_roundtrip(m_display);
        say("owner");
    }

private:
    void serve(const QByteArray& target, int pipe) {
        say("request " + target);
        if (option("mute") == 0) {
            goOn({target}, pipe);
        }
    }

    // Waits for the reader, as many programs do.
    void goOn(const Transfer& begun, int pipe) {
        later(option("trickle"), [this, transfer = begun, pipe]() mutable {
            bool hasReader = true;
            const auto send = [&](const QByteArray& chunk) {
                for (qsizetype sent = 0; hasReader && sent < chunk.size();) {
                    const auto count =
                        write(pipe, chunk.constData() + sent, static_cast<size_t>(chunk.size() - sent));
                    hasReader = count > 0;
                    sent += count;
                }
            };
            if (!isStopped(transfer)) {
                sendNextOf(transfer, send) && hasReader ? goOn(transfer, pipe) : void(close(pipe));
            }
        });
    }

    wl_display* m_display;
    QSocketNotifier m_notifier;
    wl_seat* m_seat = nullptr;
    zwlr_data_control_manager_v1* m_manager = nullptr;
};

} // namespace

std::unique_ptr<ClipboardOwner> newWaylandClipboardOwner(const ClipboardOwner::Wishes& wishes) {
    return std::make_unique<WaylandClipboardOwner>(wishes);
}

} // namespace corvatto::test
