// Tells the presses of a key from its repeats while it is held.
#pragma once

#include <QElapsedTimer>

#include <chrono>

namespace corvatto {

// Main thread.
class HeldKey {
public:
    // A press without a release since the one before it is a repeat, unless they are further apart than this:
    // desktops offer delays of up to one second.
    static constexpr std::chrono::milliseconds longestRepeatPause{2000};

    explicit HeldKey(std::chrono::milliseconds longestPause = longestRepeatPause);

    // Whether this press is not a repeat. A release that never comes, because the key was let go while
    // another virtual terminal was in front, does not leave the key dead.
    bool press();
    void release();

private:
    std::chrono::milliseconds m_longestPause;
    QElapsedTimer m_lastPress; // valid while the key is down
};

} // namespace corvatto
