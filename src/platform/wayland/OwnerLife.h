// Whether the program that owns the clipboard has exited, as far as that can be known.
#pragma once

#include <functional>

namespace corvatto {

// Main thread.
class OwnerLife {
public:
    OwnerLife() = default;
    virtual ~OwnerLife() = default;
    OwnerLife(const OwnerLife&) = delete;
    OwnerLife& operator=(const OwnerLife&) = delete;

    bool hasExited() const { return m_hasExited; }

    // Called once, from the event loop, when it exits. May destroy this object.
    std::function<void()> onExit;

protected:
    void exited() {
        if (!m_hasExited) {
            m_hasExited = true;
            if (const auto tell = onExit) {
                tell();
            }
        }
    }

private:
    bool m_hasExited = false;
};

} // namespace corvatto
