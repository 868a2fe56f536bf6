// The real program on a private desktop: keys are pressed as by a person, other programs copy and paste, and
// a figure's time ends when its pixels are on the screen.
//
// What is waited for and does not happen within twenty seconds throws std::runtime_error.
#pragma once

#include "BenchDesktop.h"

#include <functional>
#include <optional>

namespace corvatto::bench {

class ProgramUnderTest {
public:
    // `dataDirectory` is XDG_DATA_HOME for the program, which is not started yet.
    ProgramUnderTest(BenchDesktop::Kind kind, const QString& dataDirectory);

    double start(); // until the panel is painted, in seconds
    void stop() { m_program.reset(); }
    void waitForKeyboard();
    void show(); // and waits until the panel has the keyboard
    void hide();

    // Seconds until that is on the screen.
    double press(const QByteArray& keys, const std::function<bool()>& isDone);
    double pressShortcut();
    double requestToggle(); // over its socket, as what a compositor binds to the shortcut does
    bool isPanelPainted() { return pixelAt({1900, 1070}) == panelColor; } // below the cards
    // In the row of edges of the cards' borders, of which the selected card's is darker than the others'.
    bool hasCards() { return pixelAt({28 + 5, borderY}) == 0xFFFFFFFF; }
    bool isFirstSelected() { return qGray(pixelAt({28, borderY})) < 150; }

    // The longest time in which the program's event loop does not answer a word on its socket, which it is
    // asked every few milliseconds while `action` runs. In seconds.
    double stallWhile(const std::function<void()>& action);
    // Another program copies, and keeps the clipboard until the next one. Returns when that is in the history
    // and what comes after it is done.
    void copyText(const QByteArray& text) { copy(desktop().textTarget(), text); }
    void copyPicture(const QByteArray& png) { copy("image/png", png); }
    // Another program pastes.
    void paste(const QByteArray& target);

    QString database() const { return m_database; } // the file of the history

    // From the process's own statistics.
    double residentMebibytes() const;
    long contextSwitches() const; // of all its threads, since the start

private:
    static constexpr QRgb panelColor = 0xFFE5E5E5;
    static constexpr int borderY = BenchDesktop::size.height() - 28 - 1 - 18 - 160;

    test::TestDesktop& desktop() { return m_desktop->desktop(); }
    QRgb pixelAt(QPoint position) { return m_desktop->pixelAt(position); }
    double seconds(const std::function<void()>& action, const std::function<bool()>& isDone);
    void copy(const QByteArray& target, const QByteArray& bytes);
    void ask(std::string_view request); // over its socket
    qint64 newestEntry() const;         // its number in the history; negative when that cannot be read
    QByteArray procFile(const QByteArray& name) const;

    std::unique_ptr<BenchDesktop> m_desktop;
    QProcessEnvironment m_environment;
    QString m_database;
    std::optional<test::Process> m_program, m_clipboardOwner;
};

} // namespace corvatto::bench
