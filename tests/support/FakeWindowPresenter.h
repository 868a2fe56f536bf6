// A window system that shows what it is asked to show.
#pragma once

#include "platform/WindowPresenter.h"

#include <QWidget>

namespace corvatto::test {

class FakeWindowPresenter : public WindowPresenter {
public:
    bool hasScreen = true;

    void becomeAccessory() override {}
    bool showPanel(QWidget& panel) override {
        if (hasScreen) {
            panel.show();
            panel.activateWindow();
        }
        return hasScreen;
    }
    void hidePanel(QWidget& panel) override { panel.hide(); }
    void activate(QWidget& window) override { window.activateWindow(); }
    void setTakesAllKeys(QWidget& /*window*/, bool /*takes*/) override {}
};

} // namespace corvatto::test
