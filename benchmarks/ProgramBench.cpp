// The real program on a private X server with a window manager: keys are pressed as by a person, and a
// figure's time ends when its pixels are on the screen.
#include "DataSets.h"
#include "Suites.h"

#include "endtoend/X11Desktop.h"
#include "endtoend/XClient.h"

#include <QColor>
#include <QFile>

#include <xcb/xtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include <unistd.h>

namespace corvatto::bench {
namespace {

using test::Process;
using test::soon;
using test::X11Desktop;
using test::XClient;
using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

// Positions on the keyboard, as X numbers them.
enum Key : xcb_keycode_t {
    escape = 9,
    backspace = 22,
    letterH = 43,
    letterZ = 52,
    shift = 50,
    letterV = 55,
    super = 133
};

constexpr QRgb panelColor = 0xFFE5E5E5;
constexpr int panelHeight = 440;
constexpr QSize screenSize(1920, 1080);
// A pixel of the panel below the cards, and pixels of the left edges of the first two cards' borders, which
// tell where the selection is.
constexpr QPoint inPanel(1900, 1070);
constexpr int borderY = screenSize.height() - 28 - 1 - 18 - 160;

class ProgramUnderTest {
public:
    explicit ProgramUnderTest(long entries)
        : m_desktop({screenSize, 0}), m_environment(m_desktop.environment()), x(m_desktop.display()) {
        m_environment.insert(QStringLiteral("XDG_DATA_HOME"), dataSet(entries));
    }

    // Until the panel is painted.
    double start() {
        return seconds([this] { m_program.emplace(CORVATTO_PROGRAM, QByteArrayList(), m_environment); },
                       [this] { return isPanelPainted(); });
    }
    void stop() { m_program.reset(); }

    double press(std::initializer_list<Key> keys, const std::function<bool()>& isDone) {
        // Released at once, or a slow answer would meet the key's repeats.
        return seconds([&] { x.strike(keys); }, isDone);
    }

    bool isPanelPainted() { return x.pixelAt(inPanel) == panelColor; }
    void waitForKeyboard() {
        require(soon([this] { return x.cardinalOfActive("_NET_WM_PID") == m_program->pid(); }));
    }
    bool hasCards() { return x.pixelAt({28 + 5, borderY}) == 0xFFFFFFFF; }
    // The border of the selected card is darker than the others'.
    bool isFirstSelected() { return qGray(x.pixelAt({28, borderY})) < 150; }

    void hide() {
        x.strike({escape});
        require(soon([this] { return !isPanelPainted(); }));
    }

    // From the process's own statistics.
    double residentMebibytes() const {
        const QByteArray pages = procFile("statm").split(' ').value(1);
        return pages.toDouble() * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1 << 20);
    }
    double processorSeconds() const {
        const QByteArray stat = procFile("stat");
        const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
        constexpr int userTime = 11, systemTime = 12;
        return (fields.value(userTime).toDouble() + fields.value(systemTime).toDouble()) /
               static_cast<double>(sysconf(_SC_CLK_TCK));
    }

private:
    // Presses keys without a program in between and looks at single pixels.
    class Screen : public XClient {
    public:
        using XClient::XClient;

        void strike(std::initializer_list<Key> keys) {
            fake(XCB_KEY_PRESS, keys);
            fake(XCB_KEY_RELEASE, keys);
            xcb_flush(raw());
        }
        QRgb pixelAt(QPoint position) { return picture({position, QSize(1, 1)}).pixel(0, 0); }
        quint32 cardinalOfActive(const char* property) { return cardinal(activeWindow(), property); }
        using XClient::raw;

    private:
        void fake(quint8 type, std::initializer_list<Key> keys) {
            for (const Key key : keys) {
                xcb_test_fake_input(raw(), type, key, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
            }
        }
    };

    static void require(bool condition) {
        if (!condition) {
            throw std::runtime_error("the program does not do what is measured");
        }
    }

    double seconds(const std::function<void()>& action, const std::function<bool()>& isDone) {
        const auto begin = Clock::now();
        action();
        while (!isDone()) {
            require(Clock::now() - begin < 20s);
            usleep(200); // leaves the processor to the program
        }
        return std::chrono::duration<double>(Clock::now() - begin).count();
    }

    QByteArray procFile(const char* name) const {
        QFile file(QStringLiteral("/proc/%1/%2").arg(m_program->pid()).arg(QLatin1String(name)));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    X11Desktop m_desktop;
    QProcessEnvironment m_environment;
    std::optional<Process> m_program;

public:
    Screen x;
};

// What cannot be measured ends the run: half a table would look like a whole one.
template <typename Measure>
void orExit(const Measure& measure) {
    try {
        measure();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "\n%s\n", error.what());
        std::exit(EXIT_FAILURE);
    }
}

void addTimed(const char* name, double (*measure)(ProgramUnderTest&)) {
    constexpr int repetitions = 9;
    const auto run = [measure](benchmark::State& state) {
        orExit([&] {
            ProgramUnderTest program(state.range(0));
            program.start();
            program.waitForKeyboard();
            // The first key of a new server changes the keyboard, which everybody then reads anew.
            measure(program);
            for (auto _ : state) {
                state.SetIterationTime(measure(program));
            }
        });
    };
    forEachSize(
        benchmark::RegisterBenchmark(name, run)->Iterations(1)->Repetitions(repetitions)->UseManualTime());
}

double startAgain(ProgramUnderTest& program) {
    program.stop();
    return program.start();
}

double showAgain(ProgramUnderTest& program) {
    program.hide();
    const double result = program.press({super, shift, letterV}, [&] { return program.isPanelPainted(); });
    program.waitForKeyboard();
    return result;
}

double typeWhatNothingMatches(ProgramUnderTest& program) {
    // Nothing in the history has a z but "zyzzyva" would.
    const double result = program.press({letterZ}, [&] { return !program.hasCards(); });
    program.press({backspace}, [&] { return program.hasCards(); });
    return result;
}

double typeWhatManyMatch(ProgramUnderTest& program) {
    // A search selects its first result, the whole list its second entry.
    const double result = program.press({letterH}, [&] { return program.isFirstSelected(); });
    program.press({backspace}, [&] { return !program.isFirstSelected(); });
    return result;
}

void addCounted(const char* name, double (*measure)(ProgramUnderTest&)) {
    const auto run = [measure](benchmark::State& state) {
        orExit([&] {
            ProgramUnderTest program(state.range(0));
            program.start();
            program.waitForKeyboard();
            program.hide();
            for (auto _ : state) {
                state.counters["value"] = measure(program);
            }
        });
    };
    forEachSize(benchmark::RegisterBenchmark(name, run)->Iterations(1));
}

double residentWhileIdle(ProgramUnderTest& program) {
    sleep(1); // what hiding leaves to do
    return program.residentMebibytes();
}

double percentWhileIdle(ProgramUnderTest& program) {
    sleep(1);
    constexpr int duration = 10; // seconds
    const double before = program.processorSeconds();
    sleep(duration);
    return (program.processorSeconds() - before) / duration * 100;
}

} // namespace

void addProgramFigures() {
    addTimed("start to painted panel", startAgain);
    addTimed("shortcut to painted panel", showAgain);
    addTimed("key to results, nothing matches", typeWhatNothingMatches);
    addTimed("key to results, many match", typeWhatManyMatch);
    addCounted("resident, panel hidden", residentWhileIdle);
    addCounted("idle, panel hidden", percentWhileIdle);
}

} // namespace corvatto::bench
