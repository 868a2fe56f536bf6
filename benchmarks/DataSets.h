// The histories that are measured: made once with generate_history, then kept beside the build. Figures
// whose cost depends on the number of entries are measured with each of them.
#pragma once

#include <benchmark/benchmark.h>

#include <QString>
#include <QTemporaryDir>

namespace corvatto::bench {

// The directory that is XDG_DATA_HOME for a history of that many entries.
QString dataSet(long entries);
// The same for one of a hundred texts of 5 MB on average.
QString longTexts();

// A copy of a history, to be changed.
class OwnHistory {
public:
    explicit OwnHistory(const QString& directory);
    QString directory() const { return m_home.path(); }

private:
    QTemporaryDir m_home;
};

QString databaseIn(const QString& directory);
// Writes it to the disk, which would be busy with that while something is measured.
void settle(const QString& file);
// So that it is read from the disk again.
void dropFromCache(const QString& file);

// What --entries=N,N,… said, 1,000 and 100,000 and 1,000,000 otherwise.
void setSizes(const char* list);
void forEachSize(benchmark::internal::Benchmark* figure);

} // namespace corvatto::bench
