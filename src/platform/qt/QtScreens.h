// The screens as Qt sees them.
#pragma once

#include "platform/Screens.h"

namespace corvatto {

class QtScreens : public Screens {
public:
    QPoint mouseLocation() const override;
    std::vector<Screen> screens() const override;
    std::optional<Screen> mainScreen() const override;
};

} // namespace corvatto
