// The pictures of cards, read from disk when a card with one is drawn and kept while cards near it are.
#pragma once

#include <QCache>
#include <QDateTime>
#include <QPixmap>
#include <QSizeF>
#include <QString>

namespace corvatto {

class CardImages {
public:
    CardImages();

    // The image file at `path`, scaled to fill `size` (points) and cropped to it around its centre, at the
    // given device pixel ratio. Null when the file is missing or no image. A file that has changed is read
    // again.
    QPixmap filling(const QString& path, QSizeF size, double devicePixelRatio);

private:
    struct Picture {
        QDateTime modified;
        qint64 bytes;
        QPixmap pixmap; // null for a file that is no image
    };

    QCache<QString, Picture> m_pictures; // costs are pixmap bytes
};

} // namespace corvatto
