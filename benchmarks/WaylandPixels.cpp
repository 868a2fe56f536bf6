#include "WaylandPixels.h"

#include "wlr-screencopy-unstable-v1-client-protocol.h"

#include <wayland-client.h>

#include <cstring>
#include <stdexcept>

#include <sys/mman.h>
#include <unistd.h>

namespace corvatto::bench {

WaylandPixels::WaylandPixels(const QByteArray& socket)
    : m_display(wl_display_connect(socket.constData()), wl_display_disconnect) {
    require(m_display != nullptr);
    bindGlobals();
    require(m_memory != nullptr && m_output != nullptr && m_manager != nullptr);
}

WaylandPixels::~WaylandPixels() {
    if (m_pixel != nullptr) {
        munmap(m_pixel, sizeof *m_pixel);
    }
}

void WaylandPixels::require(bool condition) const {
    if (!condition) {
        throw std::runtime_error("the compositor does not show its screen");
    }
}

void WaylandPixels::bindGlobals() {
    static constexpr wl_registry_listener globals{
        [](void* data, wl_registry* registry, uint32_t name, const char* interface, uint32_t) {
            const auto self = static_cast<WaylandPixels*>(data);
            const auto bind = [&]<typename Type>(Type*& global, const wl_interface& wanted) {
                if (global == nullptr && std::strcmp(interface, wanted.name) == 0) {
                    global = static_cast<Type*>(wl_registry_bind(registry, name, &wanted, 1));
                }
            };
            bind(self->m_memory, wl_shm_interface);
            bind(self->m_output, wl_output_interface);
            bind(self->m_manager, zwlr_screencopy_manager_v1_interface);
        },
        [](void*, wl_registry*, uint32_t) {
        }};
    wl_registry_add_listener(wl_display_get_registry(m_display.get()), &globals, this);
    require(wl_display_roundtrip(m_display.get()) >= 0);
}

void WaylandPixels::copyInto(zwlr_screencopy_frame_v1* frame, quint32 format, quint32 stride) {
    if (m_buffer == nullptr && stride == sizeof *m_pixel) {
        const int file = memfd_create("pixel", MFD_CLOEXEC);
        const auto size = static_cast<int>(stride);
        if (ftruncate(file, size) == 0) {
            void* mapped = mmap(nullptr, sizeof *m_pixel, PROT_READ, MAP_SHARED, file, 0);
            m_pixel = mapped != MAP_FAILED ? static_cast<QRgb*>(mapped) : nullptr;
        }
        wl_shm_pool* pool = wl_shm_create_pool(m_memory, file, size);
        m_buffer = wl_shm_pool_create_buffer(pool, 0, 1, 1, size, format);
        wl_shm_pool_destroy(pool);
        close(file);
    }
    if (m_pixel == nullptr) {
        m_look = Look::Failed;
        return;
    }
    zwlr_screencopy_frame_v1_copy(frame, m_buffer);
}

QRgb WaylandPixels::at(QPoint position) {
    static constexpr zwlr_screencopy_frame_v1_listener events{
        [](void* data, zwlr_screencopy_frame_v1* frame, uint32_t format, uint32_t, uint32_t,
           uint32_t stride) { static_cast<WaylandPixels*>(data)->copyInto(frame, format, stride); },
        [](void*, zwlr_screencopy_frame_v1*, uint32_t) {},
        [](void* data, zwlr_screencopy_frame_v1*, uint32_t, uint32_t, uint32_t) {
            static_cast<WaylandPixels*>(data)->m_look = Look::Done;
        },
        [](void* data, zwlr_screencopy_frame_v1*) {
            static_cast<WaylandPixels*>(data)->m_look = Look::Failed;
        }};
    m_look = Look::Pending;
    zwlr_screencopy_frame_v1* frame = zwlr_screencopy_manager_v1_capture_output_region(
        m_manager, 0, m_output, position.x(), position.y(), 1, 1);
    zwlr_screencopy_frame_v1_add_listener(frame, &events, this);
    while (m_look == Look::Pending) {
        require(wl_display_dispatch(m_display.get()) >= 0);
    }
    zwlr_screencopy_frame_v1_destroy(frame);
    require(m_look == Look::Done);
    return *m_pixel | 0xFF000000;
}

} // namespace corvatto::bench
