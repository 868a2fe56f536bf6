#include "DataSets.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <unistd.h>

namespace corvatto::bench {
namespace {

QList<long>& sizes() {
    static QList<long> list{1'000, 100'000, 1'000'000};
    return list;
}

QString made(const QString& name, const QStringList& options) {
    const QString directory = QDir(QStringLiteral(BENCH_DATA_DIRECTORY)).absoluteFilePath(name);
    if (!QDir(directory).exists()) {
        // Under another name until it is whole.
        const QString unfinished = directory + QStringLiteral(".part");
        QDir(unfinished).removeRecursively();
        std::fprintf(stderr, "Making the history %s\n", qPrintable(name));
        const int status = QProcess::execute(
            QStringLiteral(GENERATE_HISTORY),
            QStringList{QStringLiteral("--directory=") + unfinished, QStringLiteral("--images=0")} + options);
        if (status != 0 || !QDir().rename(unfinished, directory)) {
            std::fprintf(stderr, "There is no history to measure with\n");
            std::exit(EXIT_FAILURE);
        }
    }
    // From the disk, the first search takes as long as that does: what is measured is the program.
    QFile database(databaseIn(directory));
    if (database.open(QIODevice::ReadOnly)) {
        while (!database.read(1 << 20).isEmpty()) {
        }
    }
    return directory;
}

} // namespace

QString dataSet(long entries) {
    return made(QString::number(entries), {QStringLiteral("--entries=%1").arg(entries)});
}

QString longTexts() {
    return made(QStringLiteral("long"),
                {QStringLiteral("--entries=100"), QStringLiteral("--text-bytes=5000000")});
}

OwnHistory::OwnHistory(const QString& directory)
    : m_home(QDir(QStringLiteral(BENCH_DATA_DIRECTORY)).absoluteFilePath(QStringLiteral("history-XXXXXX"))) {
    QDir(m_home.path()).mkdir(QStringLiteral("Corvatto"));
    QFile::copy(databaseIn(directory), databaseIn(m_home.path()));
    settle(databaseIn(m_home.path()));
}

QString databaseIn(const QString& directory) {
    return directory + QStringLiteral("/Corvatto/corvatto.sqlite3");
}

void settle(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || fsync(file.handle()) != 0) {
        std::fprintf(stderr, "the disk stays busy\n");
    }
}

void dropFromCache(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || posix_fadvise(file.handle(), 0, 0, POSIX_FADV_DONTNEED) != 0) {
        std::fprintf(stderr, "the cache stays warm\n");
    }
}

void setSizes(const char* list) {
    sizes().clear();
    for (const QString& number : QString::fromUtf8(list).split(u',')) {
        sizes().append(number.toLong());
    }
}

void forEachSize(benchmark::internal::Benchmark* figure) {
    figure->ArgName("entries");
    for (const long entries : sizes()) {
        figure->Arg(entries);
    }
}

} // namespace corvatto::bench
