// A desktop of a test's own: a private display with something that manages windows, and a home directory. All
// of it ends with the object, and nothing of the user's own desktop is read or touched.
#pragma once

#include "Process.h"

#include <QColor>
#include <QImage>
#include <QRect>
#include <QTemporaryDir>

#include <memory>

namespace corvatto::test {

class TestDesktop {
public:
    struct Options {
        QSize screen = {1280, 1100}; // pixels
        int bottomMargin = 0;        // pixels kept free at the bottom, as for a task bar
        bool hasSessionBus = false;
        bool hasXServer = false; // on Wayland: one for X programs
    };

    virtual ~TestDesktop() = default;

    const QByteArray& sessionBus() const { return m_sessionBus; }            // its address
    const QProcessEnvironment& environment() const { return m_environment; } // for programs on this desktop

    // Absolute paths, below the private home.
    QByteArray home() const { return m_home.path().toUtf8(); }
    QByteArray dataDirectory() const { return home() + "/data/Corvatto"; }
    QByteArray settingsFile() const { return home() + "/config/corvatto/corvatto.ini"; }
    // Writes a file below the home, directories included, and returns its path.
    QByteArray writeFile(const QByteArray& name, const QByteArray& bytes) const;

    // Keys one after the other, such as "ctrl+a BackSpace". Throws std::runtime_error when there is no such
    // key.
    virtual void key(const QByteArray& keys) = 0;
    virtual void type(const QByteArray& text) = 0;
    virtual void click(QPoint position, int times = 1, int button = 1) = 0; // 1 is left, 3 right

    QImage screenshot() { return picture(QRect(QPoint(0, 0), m_screen)); }
    QColor pixel(QPoint position) { return picture({position, QSize(1, 1)}).pixelColor(0, 0); }
    virtual QImage picture(QRect area) = 0;

    // The panel of the program with that process number. Empty while it is hidden.
    virtual QRect panel(qint64 pid) = 0;
    virtual bool panelHasKeyboard(qint64 pid) = 0;

    struct Window {
        QByteArray application, title;
        QRect rect;
    };
    // The window with the keyboard. Empty when none has it, or the panel of the program with that process
    // number.
    virtual Window windowInFront(qint64 panelsPid) = 0;
    // Of another program, magenta, over the full screen. Returns when it has the keyboard and is painted.
    void openWindow(const QByteArray& application);
    QByteArray printedByWindow() const { return m_windows.back()->output(); } // the last one opened
    void closeWindow() { m_windows.pop_back(); }                              // likewise

    // What a plain text goes by here.
    virtual QByteArray textTarget() const = 0;
    // The clipboard as another program gets it; nothing when it is refused or does not come.
    virtual std::optional<QByteArray> paste(const QByteArray& target) = 0;
    virtual QList<QByteArray> targets() = 0;
    bool clipboardIsEmpty() { return targets().join().isEmpty(); }

    virtual void stopServer() = 0; // and with it everything on the screen

protected:
    explicit TestDesktop(const Options& options);

    void setVariable(const char* name, const QByteArray& value);
    // What a program prints, when it succeeds.
    std::optional<QByteArray> outputOf(const QByteArray& program, const QByteArrayList& arguments) const;

    const QSize m_screen;

private:
    QTemporaryDir m_home;
    QProcessEnvironment m_environment;
    QByteArray m_sessionBus;
    std::unique_ptr<Process> m_bus;
    std::vector<std::unique_ptr<Process>> m_windows;
};

} // namespace corvatto::test
