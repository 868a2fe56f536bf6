// The windows that a KWin tells of, with the one that has the keyboard among them.
#pragma once

#include "TestDesktop.h"

struct wl_display;
struct org_kde_plasma_window;
struct org_kde_plasma_window_management;

namespace corvatto::test {

class PlasmaWindows {
public:
    // Throws std::runtime_error when the compositor at that socket tells of none.
    explicit PlasmaWindows(const QByteArray& socket);
    ~PlasmaWindows();
    PlasmaWindows(const PlasmaWindows&) = delete;
    PlasmaWindows& operator=(const PlasmaWindows&) = delete;

    // As of now. Empty when none has the keyboard.
    TestDesktop::Window active();
    // Minimises it.
    void minimizeActive();

private:
    struct Release {
        void operator()(org_kde_plasma_window* window) const;
    };
    struct Entry {
        std::unique_ptr<org_kde_plasma_window, Release> handle;
        TestDesktop::Window window;
        bool isActive = false;
    };
    struct Listeners;

    const Entry* activeEntry();

    wl_display* m_display;
    org_kde_plasma_window_management* m_management = nullptr;
    std::vector<std::unique_ptr<Entry>> m_entries; // those that are closed included, as inactive ones
};

} // namespace corvatto::test
