// The window around the preferences view: a fixed size, a title, a close button, and nothing else.
#pragma once

#include <QWidget>

namespace corvatto {

// Closing hides it; it lasts as long as the program, with its state.
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
