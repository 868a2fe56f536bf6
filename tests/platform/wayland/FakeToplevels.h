// The windows of a desktop as a compositor tells its clients of them, in each of the two protocols.
#pragma once

#include "WaylandServer.h"

#include <plasma-window-management-server-protocol.h>
#include <wlr-foreign-toplevel-management-unstable-v1-server-protocol.h>

#include <map>
#include <string>
#include <utility>

namespace corvatto::test {

class FakeToplevels {
public:
    explicit FakeToplevels(WaylandServer& server) : m_server(server) {}
    virtual ~FakeToplevels() = default;
    FakeToplevels(const FakeToplevels&) = delete;
    FakeToplevels& operator=(const FakeToplevels&) = delete;

    // A window, named by a number. It is not active.
    virtual void open(int window, const char* applicationId) = 0;
    virtual void close(int window) = 0;

    virtual void announceState(int window, bool isActive) = 0;

    // The active window; none by 0. The one that was active before is not any more, as compositors say first.
    void activate(int window) {
        if (const int before = std::exchange(m_active, 0); before != 0) {
            announceState(before, false);
        }
        m_active = window;
        if (window != 0) {
            announceState(window, true);
        }
    }

protected:
    void announced() { m_server.flush(); }

    WaylandServer& m_server;
    wl_resource* m_manager = nullptr; // the client's
    std::map<int, wl_resource*> m_windows;
    int m_active = 0;
};

class FakeWlrToplevels final : public FakeToplevels {
public:
    FakeWlrToplevels(WaylandServer& server, int version) : FakeToplevels(server) {
        wl_global_create(server.display, &zwlr_foreign_toplevel_manager_v1_interface, version, this,
                         [](wl_client* client, void* self, uint32_t bound, uint32_t id) {
                             wl_resource* manager = wl_resource_create(
                                 client, &zwlr_foreign_toplevel_manager_v1_interface, int(bound), id);
                             static_cast<FakeWlrToplevels*>(self)->m_manager = manager;
                         });
    }

    void open(int window, const char* applicationId) override {
        wl_resource* handle =
            wl_resource_create(wl_resource_get_client(m_manager), &zwlr_foreign_toplevel_handle_v1_interface,
                               wl_resource_get_version(m_manager), 0);
        wl_resource_set_implementation(handle, &requests, nullptr, nullptr);
        m_windows[window] = handle;
        zwlr_foreign_toplevel_manager_v1_send_toplevel(m_manager, handle);
        zwlr_foreign_toplevel_handle_v1_send_title(handle, "title");
        zwlr_foreign_toplevel_handle_v1_send_app_id(handle, applicationId);
        announceState(window, false);
    }
    void close(int window) override {
        zwlr_foreign_toplevel_handle_v1_send_closed(m_windows.at(window));
        m_windows.erase(window);
        announced();
    }
    void announceStateWithoutDone(int window, bool isActive) {
        quint32 values[] = {ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_MAXIMIZED,
                            ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED};
        wl_array states{isActive ? sizeof values : sizeof values[0], 0, values};
        zwlr_foreign_toplevel_handle_v1_send_state(m_windows.at(window), &states);
        announced();
    }
    void announceState(int window, bool isActive) override {
        announceStateWithoutDone(window, isActive);
        zwlr_foreign_toplevel_handle_v1_send_done(m_windows.at(window));
        announced();
    }

private:
    static constexpr struct zwlr_foreign_toplevel_handle_v1_interface requests = [] {
        struct zwlr_foreign_toplevel_handle_v1_interface served {};
        served.destroy = [](wl_client* /*client*/, wl_resource* handle) {
            wl_resource_destroy(handle);
        };
        return served;
    }();
};

class FakePlasmaToplevels final : public FakeToplevels {
public:
    FakePlasmaToplevels(WaylandServer& server, int version) : FakeToplevels(server) {
        wl_global_create(server.display, &org_kde_plasma_window_management_interface, version, this,
                         [](wl_client* client, void* self, uint32_t bound, uint32_t id) {
                             wl_resource* manager = wl_resource_create(
                                 client, &org_kde_plasma_window_management_interface, int(bound), id);
                             wl_resource_set_implementation(manager, &managerRequests, self, nullptr);
                             static_cast<FakePlasmaToplevels*>(self)->m_manager = manager;
                         });
    }

    void open(int window, const char* applicationId) override {
        m_applicationIds[window] = applicationId;
        org_kde_plasma_window_management_send_window_with_uuid(m_manager, 0, std::to_string(window).c_str());
        announced();
    }
    void close(int window) override {
        m_applicationIds.erase(window);
        if (const auto handle = m_windows.extract(window)) {
            org_kde_plasma_window_send_unmapped(handle.mapped());
            announced();
        }
    }

    // A window that the client has not asked for yet tells its state when it does.
    void announceState(int window, bool isActive) override {
        if (const auto handle = m_windows.find(window); handle != m_windows.end()) {
            constexpr uint32_t other = ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_MAXIMIZED;
            constexpr uint32_t active = ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE;
            org_kde_plasma_window_send_state_changed(handle->second, isActive ? other | active : other);
            announced();
        }
    }

private:
    static void getWindow(wl_client* client, wl_resource* manager, uint32_t id, const char* uuid) {
        auto& self = *static_cast<FakePlasmaToplevels*>(wl_resource_get_user_data(manager));
        wl_resource* handle = wl_resource_create(client, &org_kde_plasma_window_interface,
                                                 wl_resource_get_version(manager), id);
        wl_resource_set_implementation(handle, &windowRequests, nullptr, nullptr);
        const int window = std::stoi(uuid);
        const auto known = self.m_applicationIds.find(window);
        if (known == self.m_applicationIds.end()) { // closed meanwhile
            org_kde_plasma_window_send_unmapped(handle);
        } else {
            self.m_windows[window] = handle;
            org_kde_plasma_window_send_app_id_changed(handle, known->second.c_str());
            org_kde_plasma_window_send_pid_changed(handle, 1);
            self.announceState(window, self.m_active == window);
        }
        org_kde_plasma_window_send_initial_state(handle);
    }
    static constexpr struct org_kde_plasma_window_management_interface managerRequests = [] {
        struct org_kde_plasma_window_management_interface served {};
        served.get_window_by_uuid = getWindow;
        return served;
    }();
    static constexpr struct org_kde_plasma_window_interface windowRequests = [] {
        struct org_kde_plasma_window_interface served {};
        served.destroy = [](wl_client* /*client*/, wl_resource* handle) {
            wl_resource_destroy(handle);
        };
        return served;
    }();

    std::map<int, std::string> m_applicationIds;
};

} // namespace corvatto::test
