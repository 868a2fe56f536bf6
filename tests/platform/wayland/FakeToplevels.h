// The windows of a desktop as a compositor in the manner of wlroots tells its clients of them.
#pragma once

#include "WaylandServer.h"

#include <wlr-foreign-toplevel-management-unstable-v1-server-protocol.h>

#include <map>

namespace corvatto::test {

class FakeToplevels {
public:
    explicit FakeToplevels(WaylandServer& server) : m_server(server) {
        wl_global_create(server.display, &zwlr_foreign_toplevel_manager_v1_interface, 3, this,
                         [](wl_client* client, void* self, uint32_t bound, uint32_t id) {
                             wl_resource* manager = wl_resource_create(
                                 client, &zwlr_foreign_toplevel_manager_v1_interface, int(bound), id);
                             static_cast<FakeToplevels*>(self)->m_manager = manager;
                         });
    }

    // A window, named by a number. It is not active.
    void open(int window, const char* applicationId) {
        wl_resource* handle =
            wl_resource_create(wl_resource_get_client(m_manager), &zwlr_foreign_toplevel_handle_v1_interface,
                               wl_resource_get_version(m_manager), 0);
        m_windows[window] = handle;
        zwlr_foreign_toplevel_manager_v1_send_toplevel(m_manager, handle);
        zwlr_foreign_toplevel_handle_v1_send_app_id(handle, applicationId);
        announceState(window, false);
    }
    void announceStateWithoutDone(int window, bool isActive) {
        quint32 values[] = {ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_MAXIMIZED,
                            ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED};
        wl_array states{isActive ? sizeof values : sizeof values[0], 0, values};
        zwlr_foreign_toplevel_handle_v1_send_state(m_windows.at(window), &states);
        m_server.flush();
    }
    void announceState(int window, bool isActive) {
        announceStateWithoutDone(window, isActive);
        zwlr_foreign_toplevel_handle_v1_send_done(m_windows.at(window));
        m_server.flush();
    }

private:
    WaylandServer& m_server;
    wl_resource* m_manager = nullptr; // the client's
    std::map<int, wl_resource*> m_windows;
};

} // namespace corvatto::test
