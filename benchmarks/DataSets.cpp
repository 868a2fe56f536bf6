#include "DataSets.h"

#include <QDir>
#include <QFile>
#include <QProcess>

#include <cstdio>
#include <cstdlib>

namespace corvatto::bench {
namespace {

QList<long>& sizes() {
    static QList<long> list{1'000, 100'000, 1'000'000};
    return list;
}

} // namespace

QString dataSet(long entries) {
    const QString directory = QStringLiteral(BENCH_DATA_DIRECTORY "/%1").arg(entries);
    if (!QDir(directory).exists()) {
        // Under another name until it is whole.
        const QString unfinished = directory + QStringLiteral(".part");
        QDir(unfinished).removeRecursively();
        std::fprintf(stderr, "Making %ld entries\n", entries);
        const int status =
            QProcess::execute(QStringLiteral(GENERATE_HISTORY),
                              {QStringLiteral("--directory=") + unfinished, QStringLiteral("--images=0"),
                               QStringLiteral("--entries=%1").arg(entries)});
        if (status != 0 || !QDir().rename(unfinished, directory)) {
            std::fprintf(stderr, "There is no history to measure with\n");
            std::exit(EXIT_FAILURE);
        }
    }
    // From the disk, the first search takes as long as that does: what is measured is the program.
    QFile database(directory + QStringLiteral("/Corvatto/corvatto.sqlite3"));
    if (database.open(QIODevice::ReadOnly)) {
        while (!database.read(1 << 20).isEmpty()) {
        }
    }
    return directory;
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
