// The program's symbols, drawn in any colour and size. Each has the name of the system symbol it stands for.
#pragma once

#include <QColor>
#include <QIcon>
#include <QPainter>
#include <QSizeF>
#include <QString>

namespace corvatto::symbols {

// The size of a symbol set beside text of `pointSize`, in points. Square for most, empty for an unknown name.
QSizeF size(const QString& name, double pointSize);

// Draws the symbol centred in `bounds`, as large as it stands beside text of `pointSize`, crisp at the
// painter's device pixel ratio. An unknown name draws nothing.
void draw(QPainter& painter, const QString& name, const QRectF& bounds, double pointSize,
          const QColor& color);

// The symbol as a pixmap of its size, for use outside a paint event.
QPixmap pixmap(const QString& name, double pointSize, const QColor& color, double devicePixelRatio);

} // namespace corvatto::symbols
