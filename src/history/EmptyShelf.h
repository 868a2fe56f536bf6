// Shown in place of the shelf when there are no entries.
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
