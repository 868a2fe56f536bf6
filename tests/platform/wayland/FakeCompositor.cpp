#include "FakeCompositor.h"

#include <QTemporaryFile>

#include <gtest/gtest.h>

#include "wlr-data-control-unstable-v1-server-protocol.h"

#include <array>

#include <fcntl.h>
#include <wayland-server.h>

namespace corvatto::test {

struct FakeCompositor::Source {
    FakeCompositor* compositor;
    wl_resource* resource;
    QByteArrayList types;
};

namespace {

struct Offer {
    FakeCompositor* compositor;
    int generation; // -1: the primary selection
};

} // namespace

struct FakeCompositor::Requests {
    template <typename T>
    static T& of(wl_resource* resource) {
        return *static_cast<T*>(wl_resource_get_user_data(resource));
    }
    static void destroy(wl_client* /*client*/, wl_resource* resource) { wl_resource_destroy(resource); }

    static void receive(wl_client* /*client*/, wl_resource* resource, const char* type, int32_t descriptor) {
        FileDescriptor receiver(descriptor);
        const Offer& offer = of<Offer>(resource);
        FakeCompositor& self = *offer.compositor;
        self.requests.append(type);
        if (offer.generation != self.m_generation) {
            return;
        }
        if (self.m_asked) {
            self.m_asked(type, std::move(receiver));
        } else if (self.m_flavours.contains(type)) {
            writeAll(receiver, self.m_flavours.at(type));
        }
    }
    static constexpr struct zwlr_data_control_offer_v1_interface offer { receive, destroy };
    static void offerGone(wl_resource* resource) {
        const auto* offer = &of<Offer>(resource);
        --offer->compositor->offers;
        delete offer;
    }

    static void addType(wl_client* /*client*/, wl_resource* resource, const char* type) {
        of<Source>(resource).types.append(type);
    }
    static constexpr struct zwlr_data_control_source_v1_interface source { addType, destroy };
    static void sourceGone(wl_resource* resource) {
        const auto* source = &of<Source>(resource);
        if (source->compositor->m_source == source) {
            source->compositor->m_source = nullptr;
        }
        delete source;
    }

    static void setSelection(wl_client* /*client*/, wl_resource* resource, wl_resource* sourceResource) {
        auto& self = of<FakeCompositor>(resource);
        ++self.writes;
        auto* const source = sourceResource != nullptr ? &of<Source>(sourceResource) : nullptr;
        if (self.refusesWrites) {
            zwlr_data_control_source_v1_send_cancelled(sourceResource);
            return;
        }
        self.cancelSource();
        self.m_source = source;
        self.m_isOwned = false;
        ++self.m_generation;
        if (self.announcesOwnWrites) {
            self.announce();
        }
    }
    static void setPrimary(wl_client* /*client*/, wl_resource* resource, wl_resource* /*source*/) {
        ++of<FakeCompositor>(resource).primaryWrites;
    }
    static constexpr struct zwlr_data_control_device_v1_interface device {
        setSelection, destroy, setPrimary
    };
    static void deviceGone(wl_resource* resource) {
        auto& self = of<FakeCompositor>(resource);
        if (self.m_device == resource) {
            self.m_device = nullptr;
        }
    }

    static void createSource(wl_client* client, wl_resource* manager, uint32_t id) {
        wl_resource* resource = wl_resource_create(client, &zwlr_data_control_source_v1_interface,
                                                   wl_resource_get_version(manager), id);
        wl_resource_set_implementation(resource, &source,
                                       new Source{&of<FakeCompositor>(manager), resource, {}}, sourceGone);
    }
    static void getDevice(wl_client* client, wl_resource* manager, uint32_t id, wl_resource* /*seat*/) {
        auto& self = of<FakeCompositor>(manager);
        self.m_device = wl_resource_create(client, &zwlr_data_control_device_v1_interface,
                                           wl_resource_get_version(manager), id);
        wl_resource_set_implementation(self.m_device, &device, &self, deviceGone);
        if (self.m_isOwned) { // some compositors tell nothing of an empty clipboard
            self.announce();
        }
    }
    static constexpr struct zwlr_data_control_manager_v1_interface manager {
        createSource, getDevice, destroy
    };
    static void bindManager(wl_client* client, void* data, uint32_t version, uint32_t id) {
        wl_resource* resource = wl_resource_create(client, &zwlr_data_control_manager_v1_interface,
                                                   static_cast<int>(version), id);
        wl_resource_set_implementation(resource, &manager, data, nullptr);
    }
    static void getKeyboard(wl_client* client, wl_resource* seat, uint32_t id) {
        of<FakeCompositor>(seat).m_keyboard = wl_resource_create(client, &wl_keyboard_interface, 1, id);
    }
    static constexpr struct wl_seat_interface seat { nullptr, getKeyboard, nullptr, destroy };
    static void seatGone(wl_resource* resource) {
        of<FakeCompositor>(resource).m_boundSeats.removeOne(resource);
    }
    static void bindSeat(wl_client* client, void* data, uint32_t version, uint32_t id) {
        wl_resource* resource = wl_resource_create(client, &wl_seat_interface, static_cast<int>(version), id);
        wl_resource_set_implementation(resource, &seat, data, seatGone);
        of<FakeCompositor>(resource).m_boundSeats.append(resource);
        wl_seat_send_capabilities(resource, 0);
    }

    static void logged(void* data, wl_protocol_logger_type direction,
                       const wl_protocol_logger_message* message) {
        const auto& self = *static_cast<FakeCompositor*>(data);
        if (direction == WL_PROTOCOL_LOGGER_REQUEST && qstrcmp(message->message->name, "sync") == 0 &&
            self.onSync) {
            self.onSync();
        }
    }
};

namespace {

// The interface's name goes over the wire.
const wl_interface* managerNamed(const QByteArray& name) {
    static std::map<QByteArray, wl_interface> interfaces;
    const auto interface = interfaces.try_emplace(name, zwlr_data_control_manager_v1_interface).first;
    interface->second.name = interface->first.constData();
    return &interface->second;
}

} // namespace

FakeCompositor::FakeCompositor(QByteArray manager, int version) : m_managerName(std::move(manager)) {
    wl_global_create(m_server.display, managerNamed(m_managerName), version, this, Requests::bindManager);
    addSeat();
    m_logger = wl_display_add_protocol_logger(m_server.display, Requests::logged, this);
}

FakeCompositor::~FakeCompositor() {
    wl_protocol_logger_destroy(m_logger);
}

void FakeCompositor::announceInVain(const QByteArray& manager) {
    wl_global_create(m_server.display, managerNamed(manager), 1, nullptr,
                     [](wl_client* client, void* /*data*/, uint32_t /*version*/, uint32_t /*id*/) {
                         wl_client_post_implementation_error(client, "refused");
                     });
}

CompositorAbilities FakeCompositor::probe() {
    m_server.listen();
    return m_server.during(probeCompositor);
}

void FakeCompositor::disconnect() {
    wl_display_destroy_clients(m_server.display);
}

void FakeCompositor::copy(const Flavours& flavours, Asked asked) {
    m_flavours = flavours;
    m_asked = std::move(asked);
    change(true);
}

void FakeCompositor::empty() {
    change(false);
}

void FakeCompositor::change(bool isOwned) {
    m_isOwned = isOwned;
    ++m_generation;
    cancelSource();
    announce();
    m_server.flush();
}

void FakeCompositor::cancelSource() {
    if (auto* const before = std::exchange(m_source, nullptr)) {
        zwlr_data_control_source_v1_send_cancelled(before->resource);
    }
}

wl_resource* FakeCompositor::newOffer() {
    wl_resource* const offer =
        wl_resource_create(wl_resource_get_client(m_device), &zwlr_data_control_offer_v1_interface,
                           wl_resource_get_version(m_device), 0);
    wl_resource_set_implementation(offer, &Requests::offer, new Offer{this, m_generation},
                                   Requests::offerGone);
    ++offers;
    zwlr_data_control_device_v1_send_data_offer(m_device, offer);
    return offer;
}

void FakeCompositor::announce() {
    if (m_device == nullptr) {
        return;
    }
    if (!m_isOwned && m_source == nullptr) {
        zwlr_data_control_device_v1_send_selection(m_device, nullptr);
        return;
    }
    wl_resource* const offer = newOffer();
    if (m_source != nullptr) {
        for (const QByteArray& type : m_source->types) {
            zwlr_data_control_offer_v1_send_offer(offer, type.constData());
        }
    } else {
        for (const auto& [type, bytes] : m_flavours) {
            zwlr_data_control_offer_v1_send_offer(offer, type.constData());
        }
    }
    zwlr_data_control_device_v1_send_selection(m_device, offer);
}

bool FakeCompositor::marksText() {
    const bool tellsOfPrimary = m_managerName.startsWith("ext") || wl_resource_get_version(m_device) >= 2;
    if (tellsOfPrimary) {
        wl_resource* const offer = newOffer();
        zwlr_data_control_offer_v1_send_offer(offer, "text/plain");
        zwlr_data_control_device_v1_send_primary_selection(m_device, offer);
        m_server.flush();
    }
    return tellsOfPrimary;
}

std::optional<QByteArrayList> FakeCompositor::offered() const {
    return m_source != nullptr ? std::optional(m_source->types) : std::nullopt;
}

FileDescriptor FakeCompositor::ask(const QByteArray& type) {
    std::array<int, 2> ends{};
    EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    zwlr_data_control_source_v1_send_send(m_source->resource, type.constData(), ends[1]);
    m_server.flush();
    ::close(ends[1]); // the event keeps a duplicate
    ::fcntl(ends[0], F_SETFL, O_NONBLOCK);
    return FileDescriptor(ends[0]);
}

void FakeCompositor::addSeat() {
    m_seat = wl_global_create(m_server.display, &wl_seat_interface, 1, this, Requests::bindSeat);
    m_server.flush();
}

void FakeCompositor::removeSeat() {
    wl_global_destroy(std::exchange(m_seat, nullptr));
    m_isOwned = false;
    cancelSource();
    m_server.flush();
}

void FakeCompositor::setKeyboard(bool isThere) {
    m_keyboard = nullptr;
    for (wl_resource* seat : m_boundSeats) {
        wl_seat_send_capabilities(seat, isThere ? WL_SEAT_CAPABILITY_KEYBOARD : WL_SEAT_CAPABILITY_POINTER);
    }
    m_server.flush();
}

void FakeCompositor::sendKeymap(const QByteArray& text, quint32 size, quint32 format) {
    QTemporaryFile file;
    EXPECT_TRUE(file.open() && file.write(text) == text.size() && file.flush());
    wl_keyboard_send_keymap(m_keyboard, format, file.handle(), size);
    m_server.flush();
}

void FakeCompositor::finishDevice() {
    zwlr_data_control_device_v1_send_finished(m_device);
    m_server.flush();
}

void writeAll(const FileDescriptor& to, const QByteArray& bytes) {
    EXPECT_EQ(::write(to.number(), bytes.constData(), static_cast<std::size_t>(bytes.size())), bytes.size());
}

} // namespace corvatto::test
