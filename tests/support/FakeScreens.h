// Screens and a mouse that the test arranges.
#pragma once

#include "platform/Screens.h"

namespace corvatto::test {

class FakeScreens : public Screens {
public:
    QPoint mouse;
    std::vector<Screen> all;
    std::optional<Screen> main;

    QPoint mouseLocation() const override { return mouse; }
    std::vector<Screen> screens() const override { return all; }
    std::optional<Screen> mainScreen() const override { return main; }
};

} // namespace corvatto::test
