// The window around the preferences view: fixed size, title and close button.
#pragma once

#include <QWidget>

namespace corvatto {

// Closing only hides it, and its state is kept.
class PreferencesWindow : public QWidget {
    Q_OBJECT

public:
    // Takes ownership of `content`.
    explicit PreferencesWindow(QWidget* content);

    // Moves the window to the middle of its screen.
    void centre();

private:
    QWidget* m_content;
};

} // namespace corvatto
