// The window of an alert: the program's icon, the message in bold, the text below it, and the buttons in
// their order. A text that is too long for the screen scrolls, so that the buttons can always be reached.
#pragma once

#include "platform/Alerts.h"

#include <QDialog>

namespace corvatto {

class AlertDialog : public QDialog {
    Q_OBJECT

public:
    explicit AlertDialog(const Alert& alert);

    // The index of the button that was clicked; after closing, of the one that the alert names for that.
    int chosen() const { return m_chosen; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QWidget* newText(const Alert& alert);
    QWidget* newScrollingText(const QString& text);
    QWidget* newButtons(const QStringList& titles);

    int m_chosen;
};

} // namespace corvatto
