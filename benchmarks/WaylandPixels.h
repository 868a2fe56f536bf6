// Looks at single pixels of a Wayland compositor's screen, without a program in between.
#pragma once

#include <QByteArray>
#include <QPoint>
#include <QRgb>

#include <memory>

struct wl_buffer;
struct wl_display;
struct wl_output;
struct wl_shm;
struct zwlr_screencopy_frame_v1;
struct zwlr_screencopy_manager_v1;

namespace corvatto::bench {

class WaylandPixels {
public:
    // Throws std::runtime_error when the compositor at that socket shows nobody its screen.
    explicit WaylandPixels(const QByteArray& socket);
    ~WaylandPixels();
    WaylandPixels(const WaylandPixels&) = delete;
    WaylandPixels& operator=(const WaylandPixels&) = delete;

    // As of the compositor's next frame, which it waits for. Throws std::runtime_error when none comes.
    QRgb at(QPoint position);

private:
    enum class Look { Pending, Done, Failed };

    void bindGlobals();
    void copyInto(zwlr_screencopy_frame_v1* frame, quint32 format, quint32 stride);
    void require(bool condition) const;

    std::unique_ptr<wl_display, void (*)(wl_display*)> m_display;
    wl_shm* m_memory = nullptr;
    wl_output* m_output = nullptr;
    zwlr_screencopy_manager_v1* m_manager = nullptr;
    wl_buffer* m_buffer = nullptr; // of one pixel, made when the compositor has told its format
    QRgb* m_pixel = nullptr;       // mapped into memory
    Look m_look = Look::Pending;
};

} // namespace corvatto::bench
