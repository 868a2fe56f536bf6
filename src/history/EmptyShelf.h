// What the shelf's place shows when there is no entry.
#pragma once

#include <QWidget>

namespace corvatto {

class EmptyShelf : public QWidget {
    Q_OBJECT

public:
    EmptyShelf();
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace corvatto
