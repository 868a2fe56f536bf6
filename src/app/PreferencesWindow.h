// The window around the preferences view: fixed size, title and close button.
#pragma once

#include <QTimer>
#include <QWidget>

namespace corvatto {

// Closing only hides it, and its state is kept.
class PreferencesWindow : public QWidget {
    Q_OBJECT

public:
    // Takes ownership of `content`.
    explicit PreferencesWindow(QWidget* content);

    // Moves the window, with its frame, to the middle of its screen.
    void centre();

private:
    void moveToMiddle();
    void lookForFrame();
    QMargins frameMargins() const;

    QWidget* m_content;
    QTimer m_frameTimer;
    int m_looksLeft = 0;
    QMargins m_marginsAtCentre; // of the frame
};

} // namespace corvatto
