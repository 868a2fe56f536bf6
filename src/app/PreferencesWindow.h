// The window around the preferences view: fixed size, title and close button.
#pragma once

#include <QWidget>

#include <optional>

namespace corvatto {

// Closing only hides it, and its state is kept.
class PreferencesWindow : public QWidget {
    Q_OBJECT

public:
    // Takes ownership of `content`.
    explicit PreferencesWindow(QWidget* content);

    // Moves the window, with its frame, to the middle of its screen.
    void centre();

protected:
    bool event(QEvent* event) override;

private:
    QMargins frameMargins() const;

    QWidget* m_content;
    std::optional<QMargins> m_marginsAtCentre; // of the frame; none until it was centred
};

} // namespace corvatto
