// SQLite's way to the disk with faults on demand, for all connections that are opened while it lives: fails
// the n-th call that reaches the disk, or all from the n-th on. Knows besides what a loss of power would
// leave.
#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

#include <sqlite3.h>

namespace corvatto::test {

class FaultyVfs {
public:
    enum class Fault {
        ioError,  // any call fails, with the code of its kind; a write has written half by then
        diskFull, // only what needs space fails: writes, and files that would be created or grow
    };
    // What is on the disk for sure: of each file, its content at its last synchronisation.
    using Disk = QMap<QString, QByteArray>;

    FaultyVfs();
    ~FaultyVfs();
    FaultyVfs(const FaultyVfs&) = delete;
    FaultyVfs& operator=(const FaultyVfs&) = delete;

    // The n-th call from now on fails, counted from 1, and with `persistently` all after it.
    void arm(Fault fault, int n, bool persistently);
    // Ends the faults. Whether there were any.
    bool disarm();

    // What a loss of power would leave.
    Disk& disk() { return m_disk; }

    // For the calls themselves: whether this one is to fail.
    bool fails(bool needsSpace);
    Fault fault() const { return m_fault; }
    sqlite3_vfs* original() const { return m_original; }

private:
    sqlite3_vfs* m_original;
    sqlite3_vfs m_vfs;
    Fault m_fault = Fault::ioError;
    int m_countdown = 0; // calls until the fault; 0 when none is to come
    bool m_persistently = false;
    bool m_hasFailed = false;
    Disk m_disk;
};

} // namespace corvatto::test
