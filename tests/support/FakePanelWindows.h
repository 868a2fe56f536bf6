// A window manager that does what it is asked.
#pragma once

#include "platform/PanelWindows.h"

#include <QWidget>

namespace corvatto::test {

class FakePanelWindows : public PanelWindows {
public:
    int preparedHidden = 0; // how often a panel was prepared while it was hidden

    void becomeAccessory() override {}
    void prepareToShow(QWidget& panel) override { preparedHidden += panel.isVisible() ? 0 : 1; }
    void confirmShown(QWidget& /*panel*/) override {}
    bool askAgainToShow(QWidget& /*panel*/) override { return false; }
    void activate(QWidget& panel) override { panel.activateWindow(); }
};

} // namespace corvatto::test
