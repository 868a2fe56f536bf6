// A window of another program: magenta, over the full screen. Its argument is the name of its desktop entry
// and of its class. Ctrl+C copies "copied in a window", Ctrl+V prints the text on the clipboard, and
// Super+Shift+V prints "key".
#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QRasterWindow>

#include <cstdio>

namespace {

class Window : public QRasterWindow {
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter(this).fillRect(QRect(QPoint(0, 0), size()), Qt::magenta);
    }

    void keyPressEvent(QKeyEvent* event) override {
        QClipboard* const clipboard = QGuiApplication::clipboard();
        if (event->matches(QKeySequence::Copy)) {
            clipboard->setText(QStringLiteral("copied in a window"));
        } else if (event->key() == Qt::Key_V) {
            std::puts(event->matches(QKeySequence::Paste) ? qPrintable(clipboard->text()) : "key");
            std::fflush(stdout);
        }
    }
};

} // namespace

int main(int argc, char** argv) {
    const QGuiApplication application(argc, argv);
    QGuiApplication::setDesktopFileName(QString::fromLocal8Bit(argv[1]));
    QGuiApplication::setApplicationName(QGuiApplication::desktopFileName());
    Window window;
    window.showFullScreen();
    return QGuiApplication::exec();
}
