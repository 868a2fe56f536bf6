// Loads the recording of copies and the store, prints figures as rows of a table, and exits with a failure
// when a bound is broken.
//
//   store_load --hour [--seed=N]   an hour of ten copies a second, recorded by the monitor into the store,
//                                  and after each what the panel does then. The clock is the load's own;
//                                  the work is done in full
//   store_load --history=DIR       the operations of the store on the history in DIR, which is changed by it
#include "history/HistoryViewModel.h"
#include "settings/LaunchDefaults.h"
#include "settings/SettingsKeys.h"
#include "support/Eventually.h"
#include "support/FakePasteboard.h"
#include "support/FakeUserDefaults.h"

#include <QCommandLineParser>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <random>

#include <unistd.h>

using namespace corvatto;

namespace {

bool failed = false;

void row(const char* what, const QString& figure, bool holds = true) {
    std::printf("%-58s %16s%s\n", what, qPrintable(figure), holds ? "" : "   FAILED");
    std::fflush(stdout);
    failed = failed || !holds;
}

QString milliseconds(double value) {
    return QString::number(value, 'f', 2) + QStringLiteral(" ms");
}

QString megabytes(double value) {
    return QString::number(value, 'f', 1) + QStringLiteral(" MB");
}

double residentMegabytes() {
    QFile file(QStringLiteral("/proc/self/statm"));
    file.open(QIODevice::ReadOnly);
    return file.readAll().split(' ').value(1).toDouble() * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1e6;
}

template <typename Work>
double timed(Work work) {
    QElapsedTimer timer;
    timer.start();
    work();
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

// The middle one of several.
template <typename Work>
double timed(int times, Work work) {
    QList<double> all;
    for (int i = 0; i < times; ++i) {
        all << timed(work);
    }
    std::sort(all.begin(), all.end());
    return all[times / 2];
}

// What the program has behind its windows, with a clipboard and a clock in our hands.
struct Program {
    std::chrono::system_clock::time_point time = std::chrono::system_clock::now();
    test::FakeUserDefaults defaults;
    test::FakePasteboard pasteboard;
    Preferences preferences{defaults};
    ClipboardStore store;
    ClipboardMonitor monitor{store, pasteboard, defaults};
    HistoryViewModel viewModel{store, pasteboard};

    explicit Program(const QString& directory) : store(directory, preferences, [this] { return time; }) {
        registerLaunchDefaults(defaults);
        pasteboard.sourceApplication = QStringLiteral("Editor");
        viewModel.monitor = &monitor;
        monitor.onNewItem = [this] {
            viewModel.refresh();
        };
        monitor.start();
    }
    // What happens when the monitor's interval has passed, with what that starts beside the main thread.
    void tick() {
        auto* timer = monitor.findChild<QTimer*>();
        QTimerEvent event(timer->timerId());
        QCoreApplication::sendEvent(timer, &event);
        // The log is moved, then retention goes on, and the log is moved again.
        for (int round = 0; round < 3; ++round) {
            monitor.finish();
            store.finish();
            QCoreApplication::processEvents();
        }
    }
};

qsizetype filesIn(const QString& directory) {
    return QDir(directory).entryList(QDir::Files).size();
}

Image someImage(std::mt19937& random) {
    QImage pixels(320, 200, QImage::Format_RGB32);
    for (int y = 0; y < pixels.height(); ++y) {
        std::fill_n(reinterpret_cast<QRgb*>(pixels.scanLine(y)), pixels.width(), random());
    }
    return Image(pixels);
}

void copySomething(Program& program, std::mt19937& random, int number) {
    switch (number % 20) {
    case 0:
        program.pasteboard.copy({{}, someImage(random), {}, {}, {}});
        break;
    case 1: {
        const QString path = QStringLiteral("/home/user/file %1").arg(number);
        program.pasteboard.copy({{QUrl::fromLocalFile(path)}, {}, {}, {}, {}});
        break;
    }
    case 2: // a repeat
        program.pasteboard.copyText(program.viewModel.items().value(40).content.load().value_or(QString()));
        break;
    default:
        program.pasteboard.copyText(
            QStringLiteral("copy %1 ").arg(number) +
            QString(static_cast<int>(random() % (number % 100 == 3 ? 200'000 : 2'000)), u'文'));
    }
}

void loadForAnHour(unsigned seed) {
    constexpr int copies = 36'000, limit = 1'000;
    const QTemporaryDir home;
    Program program(home.path());
    program.defaults.setInteger(SettingsKeys::maxItemCount, limit);
    program.defaults.setInteger(SettingsKeys::maxRetentionDays, 1);
    std::mt19937 random(seed);
    QElapsedTimer timer;
    timer.start();
    double longest = 0, settled = 0, most = 0;
    bool isTrimmed = true;
    for (int number = 0; number < copies; ++number) {
        program.time += std::chrono::milliseconds(100);
        copySomething(program, random, number);
        longest = std::max(longest, timed([&] { program.tick(); }));
        most = std::max(most, residentMegabytes());
        if (number % 1'000 == 999) {
            const auto items = program.store.fetchRecent(std::nullopt, copies);
            const auto images = std::count_if(items.begin(), items.end(), [](const ClipboardItem& item) {
                return item.contentType == QLatin1String("image") && QFile::exists(item.content.prefix());
            });
            isTrimmed = isTrimmed && items.size() <= limit && images == filesIn(program.store.imagesDir()) &&
                        images == filesIn(program.store.thumbnailsDir());
        }
        if (number == copies / 6) {
            settled = most = residentMegabytes();
        }
    }
    const qint64 log = QFile(home.filePath(QStringLiteral("Corvatto/corvatto.sqlite3-wal"))).size();
    row("hour: mean time of a copy", milliseconds(static_cast<double>(timer.elapsed()) / copies));
    row("hour: longest copy", milliseconds(longest));
    row("hour: resident after ten minutes", megabytes(settled));
    row("hour: most resident after that", megabytes(most), most < settled + 20);
    row("hour: size of the write-ahead log", megabytes(static_cast<double>(log) / 1e6), log < 8'000'000);
    row("hour: only the newest 1000 and their files kept", QString::fromUtf8(isTrimmed ? "yes" : "no"),
        isTrimmed && program.store.fetchRecent(std::nullopt, copies).size() == limit);
    program.time += std::chrono::hours(25);
    program.pasteboard.copyText(QStringLiteral("the day after"));
    program.tick();
    const bool isAlone = program.store.fetchRecent(std::nullopt, copies).size() == 1 &&
                         test::eventually([&] { return filesIn(program.store.imagesDir()) == 0; });
    row("hour: a day later, only the new copy kept", QString::fromUtf8(isAlone ? "yes" : "no"), isAlone);
}

void loadHistory(const QString& directory) {
    std::optional<Program> program;
    row("opening", milliseconds(timed([&] { program.emplace(directory); })));
    HistoryViewModel& model = program->viewModel;
    const auto refreshing = milliseconds(timed([&] { model.refresh(); }));
    row("first list of 100", refreshing, model.items().size() == 100);
    row("another", milliseconds(timed(9, [&] { model.refresh(); })));
    row("resident with that list", megabytes(residentMegabytes()));
    for (const auto& [text, matches] : {std::pair{"zyzzyva", 0}, {"the", 100}}) {
        model.setSearchText(QLatin1String(text));
        const auto search = [&, wanted = matches] {
            model.search();
            test::eventually([&] { return model.items().size() == wanted; });
        };
        const auto first = milliseconds(timed(search));
        row(matches == 0 ? "search, nothing matches, first" : "search, many match, first", first,
            model.items().size() == matches);
        row("another", milliseconds(timed(3, search)));
    }
    model.setSearchText({});
    model.refresh();
    int number = 0;
    const auto recordText = [&] {
        program->pasteboard.copyText(QStringLiteral("a new copy %1").arg(++number));
        program->tick();
    };
    const auto copying = milliseconds(timed(9, recordText));
    row("a copy, until the panel knows", copying,
        program->store.fetchRecent(QStringLiteral("a new copy"), 100).size() == 9);
    program->defaults.setInteger(SettingsKeys::maxItemCount, 1'000'000);
    row("the first with a limit of a million", milliseconds(timed(recordText)));
    row("others with it", milliseconds(timed(9, recordText)));
    program->defaults.setInteger(SettingsKeys::maxRetentionDays, 365);
    row("the first with a limit of a year", milliseconds(timed(recordText)));
    row("others with it", milliseconds(timed(9, recordText)));
    row("resident at the end", megabytes(residentMegabytes()));
    const auto clearing = milliseconds(timed([&] { model.clearAll(); }));
    row("clearing", clearing, model.items().isEmpty());
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption hour(QStringLiteral("hour"));
    const QCommandLineOption history(QStringLiteral("history"), {}, QStringLiteral("directory"));
    const QCommandLineOption seed(QStringLiteral("seed"), {}, QStringLiteral("number"), QStringLiteral("1"));
    parser.addOptions({hour, history, seed});
    parser.process(application);
    if (parser.isSet(hour)) {
        loadForAnHour(parser.value(seed).toUInt());
    }
    if (parser.isSet(history)) {
        loadHistory(parser.value(history));
    }
    return failed ? EXIT_FAILURE : EXIT_SUCCESS;
}
