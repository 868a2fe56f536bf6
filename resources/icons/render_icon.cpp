// Draws an SVG file as a square PNG file, for the sizes that desktops look up by name. Part of the build.
// Usage: render_icon SVG SIDE PNG, with the side in pixels.
#include <QCoreApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 4) {
        std::fputs("usage: render_icon SVG SIDE PNG\n", stderr);
        return 2;
    }
    QSvgRenderer drawing(arguments[1]);
    const int side = arguments[2].toInt();
    if (!drawing.isValid() || side <= 0) {
        std::fprintf(stderr, "render_icon: nothing to draw in %s\n", qUtf8Printable(arguments[1]));
        return 1;
    }
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    drawing.render(&painter);
    painter.end();
    if (!image.save(arguments[3], "PNG")) {
        std::fprintf(stderr, "render_icon: cannot write %s\n", qUtf8Printable(arguments[3]));
        return 1;
    }
    return 0;
}
