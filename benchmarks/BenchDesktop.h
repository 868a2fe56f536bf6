// A private desktop for the whole program, X11 or sway, on which keys are pressed and pixels are looked at
// over connections of the bench's own: another program in between would take part of the time that is
// measured.
#pragma once

#include "endtoend/TestDesktop.h"

namespace corvatto::bench {

class BenchDesktop {
public:
    enum class Kind { X11, Sway };

    static constexpr QSize size{1920, 1080}; // pixels

    // Throws std::runtime_error when the desktop does not come about.
    static std::unique_ptr<BenchDesktop> open(Kind kind);
    static bool isInstalled(Kind kind);

    virtual ~BenchDesktop() = default;

    virtual test::TestDesktop& desktop() = 0;
    // A combination such as "super+shift+v". Released at once, or a slow answer would meet the key's repeats.
    virtual void press(const QByteArray& keys) = 0;
    virtual QRgb pixelAt(QPoint position) = 0;
};

} // namespace corvatto::bench
