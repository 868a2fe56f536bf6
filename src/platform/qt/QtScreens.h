// The screens as Qt sees them.
#pragma once

#include "platform/Screens.h"

#include <QTimer>

class QScreen;

namespace corvatto {

// Needs the application object.
class QtScreens : public Screens {
public:
    QtScreens();

    QPoint mouseLocation() const override;
    std::vector<Screen> screens() const override;
    std::optional<Screen> mainScreen() const override;

private:
    void watch(const QScreen* screen);

    QTimer m_change; // joins the many signals that one change of the desktop causes
};

} // namespace corvatto
