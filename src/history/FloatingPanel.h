// The window of the history panel: without title bar, above other windows, and yet taking the keyboard.
#pragma once

#include <QWidget>

namespace corvatto {

class FloatingPanel : public QWidget {
    Q_OBJECT

public:
    // Takes ownership of `content`, which fills the panel whatever its size.
    explicit FloatingPanel(QWidget* content);

    bool isKeyWindow() const { return isActiveWindow(); }

Q_SIGNALS:
    // The window manager wants the panel closed. It lives as long as the program, and can only be hidden.
    void closeRequested();

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void hideEvent(QHideEvent* event) override;
};

} // namespace corvatto
