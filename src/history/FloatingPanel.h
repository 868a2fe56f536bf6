// The window of the history panel: without title bar, above other windows, and yet taking the keyboard.
#pragma once

#include <QWidget>

namespace corvatto {

class FloatingPanel : public QWidget {
    Q_OBJECT

public:
    // Takes ownership of `content`, which fills the panel whatever its size.
    explicit FloatingPanel(QWidget* content);

    // Shows the panel above its siblings, ready to take the keyboard.
    void orderFront();

    // Hides the panel without closing it.
    void orderOut();

    bool isKeyWindow() const { return isActiveWindow(); }

protected:
    void closeEvent(QCloseEvent* event) override;
};

} // namespace corvatto
