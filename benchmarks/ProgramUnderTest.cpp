#include "ProgramUnderTest.h"

#include "DataSets.h"

#include "command/InstanceRequest.h"

#include <QDir>
#include <QFile>
#include <QScopeGuard>

#include <sqlite3.h>

#include <atomic>
#include <chrono>
#include <future>
#include <stdexcept>

#include <unistd.h>

namespace corvatto::bench {
namespace {

using test::soon;
using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

void require(bool condition) {
    if (!condition) {
        throw std::runtime_error("the program does not do what is measured");
    }
}

double inSeconds(Clock::duration duration) {
    return std::chrono::duration<double>(duration).count();
}

} // namespace

ProgramUnderTest::ProgramUnderTest(BenchDesktop::Kind kind, const QString& dataDirectory)
    : m_desktop(BenchDesktop::open(kind)), m_environment(desktop().environment()),
      m_database(databaseIn(dataDirectory)) {
    m_environment.insert(QStringLiteral("XDG_DATA_HOME"), dataDirectory);
}

double ProgramUnderTest::start() {
    return seconds([this] { m_program.emplace(CORVATTO_PROGRAM, QByteArrayList(), m_environment); },
                   [this] { return isPanelPainted(); });
}

void ProgramUnderTest::waitForKeyboard() {
    require(soon([this] { return desktop().panelHasKeyboard(m_program->pid()); }));
}

void ProgramUnderTest::show() {
    pressShortcut();
    waitForKeyboard();
}

void ProgramUnderTest::hide() {
    m_desktop->press("Escape");
    require(soon([this] { return !isPanelPainted(); }));
}

double ProgramUnderTest::press(const QByteArray& keys, const std::function<bool()>& isDone) {
    return seconds([&] { m_desktop->press(keys); }, isDone);
}

double ProgramUnderTest::pressShortcut() {
    return press("super+shift+v", [this] { return isPanelPainted(); });
}

double ProgramUnderTest::requestToggle() {
    return seconds([this] { ask("toggle"); }, [this] { return isPanelPainted(); });
}

void ProgramUnderTest::ask(std::string_view request) {
    const QByteArray directory = desktop().home() + "/runtime/corvatto";
    require(askInstance(directory.toStdString(), request).outcome == Answer::Outcome::Done);
}

double ProgramUnderTest::seconds(const std::function<void()>& action, const std::function<bool()>& isDone) {
    const auto begin = Clock::now();
    action();
    while (!isDone()) {
        require(Clock::now() - begin < 20s);
        usleep(200); // leaves the processor to the program
    }
    return inSeconds(Clock::now() - begin);
}

double ProgramUnderTest::stallWhile(const std::function<void()>& action) {
    std::atomic<bool> isOver = false;
    auto longest = std::async(std::launch::async, [&] {
        Clock::duration result{};
        while (!isOver) {
            const auto begin = Clock::now();
            ask(statusRequest);
            result = std::max(result, Clock::now() - begin);
            usleep(2'000);
        }
        return result;
    });
    const auto end = qScopeGuard([&] { isOver = true; }); // also when the action throws
    action();
    isOver = true;
    return inSeconds(longest.get());
}

void ProgramUnderTest::copy(const QByteArray& target, const QByteArray& bytes) {
    const QByteArray file = desktop().writeFile("copied", bytes);
    settle(QString::fromUtf8(file));
    qint64 before = -1;
    require(soon([&] { return (before = newestEntry()) >= 0; }));
    m_clipboardOwner.emplace(CLIPBOARD_CLIENT, QByteArrayList{target + '=' + file}, m_environment);
    require(soon([&] { return newestEntry() > before; }));
    usleep(300'000); // for the list, and for the log that moves into the database
}

void ProgramUnderTest::paste(const QByteArray& target) {
    require(!desktop().paste(target).value_or("").isEmpty());
}

qint64 ProgramUnderTest::newestEntry() const {
    qint64 result = -1; // while it cannot be read
    sqlite3* database = nullptr;
    sqlite3_open_v2(m_database.toUtf8().constData(), &database, SQLITE_OPEN_READONLY, nullptr);
    sqlite3_exec(
        database, "SELECT ifnull(max(id), 0) FROM clipboard_items",
        [](void* number, int, char** values, char**) {
            *static_cast<qint64*>(number) = QByteArray(values[0]).toLongLong();
            return 0;
        },
        &result, nullptr);
    sqlite3_close(database);
    return result;
}

QByteArray ProgramUnderTest::procFile(const QByteArray& name) const {
    QFile file(QStringLiteral("/proc/%1/").arg(m_program->pid()) + QString::fromLatin1(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

double ProgramUnderTest::residentMebibytes() const {
    const QByteArray pages = procFile("statm").split(' ').value(1);
    return pages.toDouble() * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1 << 20);
}

long ProgramUnderTest::contextSwitches() const {
    long sum = 0;
    for (const QString& thread : QDir(QStringLiteral("/proc/%1/task").arg(m_program->pid()))
                                     .entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        for (const QByteArray& line : procFile("task/" + thread.toLatin1() + "/status").split('\n')) {
            if (line.contains("ctxt_switches:")) {
                sum += line.mid(line.indexOf(':') + 1).trimmed().toLong();
            }
        }
    }
    return sum;
}

} // namespace corvatto::bench
