// The protocols for windows that Qt has no names for, on Qt's own connection to the compositor: its objects
// cannot be used on another one.
#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <memory>

struct wl_display;
struct wl_event_queue;
struct wl_registry;
struct wl_seat;
struct wl_subcompositor;
struct wl_surface;
struct xdg_wm_base;
struct zwlr_layer_shell_v1;
struct zwp_keyboard_shortcuts_inhibit_manager_v1;
class QWindow;

namespace corvatto {

// Main thread.
class LayerShell {
public:
    // Waits once for the compositor. Null when it offers no layer shell, or Qt does not run on Wayland.
    static std::unique_ptr<LayerShell> bind();
    ~LayerShell();
    LayerShell(const LayerShell&) = delete;
    LayerShell& operator=(const LayerShell&) = delete;

    zwlr_layer_shell_v1* layers() const { return m_layers; }
    xdg_wm_base* popups() const { return m_popups; }
    wl_subcompositor* attachments() const { return m_attachments; }
    zwp_keyboard_shortcuts_inhibit_manager_v1* inhibitors() const { return m_inhibitors; } // null without

    // The surface of a window, which Qt makes anew whenever it shows the window; null while it is hidden.
    static wl_surface* surfaceOf(QWindow& window);

    static wl_surface* newSurface(); // of no window; the caller owns it

    static wl_seat* seat(); // the one of the last input; null without any
    static quint32 serialOfLastInput();

    // Sends what has been requested, as far as the compositor reads.
    void flush() const;

private:
    struct Listeners;

    explicit LayerShell(wl_display* display);
    void bindGlobals();

    wl_display* m_display;
    zwlr_layer_shell_v1* m_layers = nullptr;
    xdg_wm_base* m_popups = nullptr;
    wl_subcompositor* m_attachments = nullptr;
    zwp_keyboard_shortcuts_inhibit_manager_v1* m_inhibitors = nullptr;
};

} // namespace corvatto
