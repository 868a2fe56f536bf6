// The scene of every end-to-end test: a desktop, the program on it, and other programs that copy and paste. A
// failing test leaves a picture of its screen in the build directory.
//
// What holds on every desktop is tested on each, in suites of DesktopTest; X11Test is for what only X11 has.
#pragma once

#include "Database.h"
#include "KWinDesktop.h"
#include "SwayDesktop.h"
#include "X11Desktop.h"

#include <QVariant>

#include <gmock/gmock.h>

namespace corvatto::test {

// What another program puts on the clipboard: the bytes of one target.
struct Offer {
    QByteArray target, bytes;
};

class EndToEndTest : public ::testing::Test {
protected:
    explicit EndToEndTest(std::unique_ptr<TestDesktop> newDesktop);
    void TearDown() override; // the program must have lived through the test, and must end in order

    void setSetting(const char* key, const QVariant& value);
    QVariant setting(const char* key); // invalid when it is not stored

    void start(); // the program
    // These throw std::runtime_error when what they wait for does not happen.
    void launch();    // starts it, until its panel has the keyboard
    void showPanel(); // by the global shortcut, likewise
    void hidePanel(); // by Escape

    // Another process of the program's with these arguments; returns its exit status.
    std::optional<int> corvatto(const QByteArrayList& arguments);

    QRect panelRect() { return desktop.panel(program->pid()); } // empty while it is hidden
    bool isPanelPainted() {
        return desktop.pixel(panelRect().bottomRight() - QPoint(5, 5)) == QColor(229, 229, 229);
    }
    bool panelHasKeyboard() { return desktop.panelHasKeyboard(program->pid()); }
    bool soonHidden();
    // Whether the keys show or hide the panel. Pressed again after a while, because the program may take
    // notice of a change of settings or of the keyboard later than the key arrives.
    bool soonToggled(const QByteArray& keys);
    bool isInFront(const QByteArray& title) { return desktop.windowInFront(program->pid()).title == title; }
    QPoint card(int index); // the centre of a card of the shelf while it is not scrolled

    // Another program takes the clipboard and keeps it until the next copy() or `owner.reset()`. The options
    // are those of clipboard_client.
    Process& copy(const QList<Offer>& offers, const QByteArrayList& options = {});
    Process& copyText(const QByteArray& text) { return copy({{textTarget, text}}); }
    // Has it copied, and returns its entry. Throws std::runtime_error when there is none.
    Database::Row record(const QByteArray& text);
    std::optional<QByteArray> paste() { return desktop.paste(textTarget); }

    bool soonStored(const QByteArray& content, qint64 copyCount = 1);
    bool soonPrinted(const QByteArray& line);
    // Leaves the program some ticks to store what it should not, then copies another text and waits until
    // that is stored: the copies before have then been dealt with. Returns what else is stored.
    QList<Database::Row> rowsAfterNextCopy();

private:
    std::unique_ptr<TestDesktop> m_desktop;

protected:
    TestDesktop& desktop;
    const QByteArray textTarget;
    Database database;
    std::unique_ptr<Process> program, owner;

private:
    void keepPicture();

    int m_copies = 0;
};

enum class DesktopKind { X11, Sway, KWin };

class DesktopTest : public EndToEndTest, public ::testing::WithParamInterface<DesktopKind> {
protected:
    explicit DesktopTest(const TestDesktop::Options& options = {});
    bool isX11() const { return GetParam() == DesktopKind::X11; }
};

QByteArray nameOf(DesktopKind kind);

#define ON_EVERY_DESKTOP(Suite)                                                                              \
    INSTANTIATE_TEST_SUITE_P(, Suite,                                                                        \
                             ::testing::Values(DesktopKind::X11, DesktopKind::Sway, DesktopKind::KWin),      \
                             [](const auto& desktop) { return nameOf(desktop.param).toStdString(); })

class X11Test : public EndToEndTest {
protected:
    explicit X11Test(const TestDesktop::Options& options = {})
        : EndToEndTest(std::make_unique<X11Desktop>(options)),
          desktop(static_cast<X11Desktop&>(EndToEndTest::desktop)), x(desktop.client()) {}
    void run(const QByteArray& command); // on the desktop, such as "xrandr --delmonitor left"
    XClient::Window panel() { return desktop.panelWindow(program->pid()); } // 0 while it is hidden

    X11Desktop& desktop;
    XClient& x;
};

QByteArrayList numberedEntries(); // "entry 0", the newest, to "entry 16"

QImage testImage(QSize size); // no pixel of it is like the next
QByteArray encoded(const QImage& image, const char* format);
QImage decoded(const QByteArray& bytes); // without the transparency that nothing shows
QByteArray bytesOf(const QByteArray& path);
QByteArray fileUrl(const QByteArray& path);

} // namespace corvatto::test

// How a failed comparison shows bytes.
inline void PrintTo(const QByteArray& bytes, std::ostream* stream) {
    *stream << '"' << bytes.left(200).toStdString() << "\", " << bytes.size() << " bytes";
}
