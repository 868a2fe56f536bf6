// A context menu in the program's colours and fonts, which is deleted when it closes.
#pragma once

#include <QMenu>

namespace corvatto {

class ContextMenu : public QMenu {
    Q_OBJECT

public:
    // Closes with the window of `parent`.
    explicit ContextMenu(QWidget* parent);

    // Shows the menu at a place of the screen, and returns at once.
    void open(const QPoint& globalPosition);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace corvatto
