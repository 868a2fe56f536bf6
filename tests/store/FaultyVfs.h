// SQLite's way to the disk with faults on demand, for all connections that are opened while it lives: fails
// the n-th call that reaches the disk, or all from the n-th on. Knows besides what a loss of power would
// leave. Any thread, since the store's workers use it beside the tests.
#pragma once

#include <QFile>
#include <QMap>

#include <sqlite3.h>

#include <map>
#include <mutex>
#include <thread>

namespace corvatto::test {

class FaultyVfs {
public:
    enum class Fault {
        ioError,  // any call fails, with the code of its kind; a write has written half by then
        diskFull, // only what needs space fails: writes, and files that would be created or grow
    };
    using Disk = QMap<QString, QByteArray>;

    FaultyVfs() : m_original(sqlite3_vfs_find(nullptr)), m_vfs(*m_original) {
        s_instance = this;
        m_vfs.zName = "faulty";
        m_vfs.xOpen = open;
        m_vfs.xDelete = [](sqlite3_vfs*, const char* name, int) {
            if (fails(false)) {
                return SQLITE_IOERR_DELETE;
            }
            const Lock lock(s_instance->m_mutex);
            s_instance->m_disk.remove(QString::fromUtf8(name));
            return s_instance->m_original->xDelete(s_instance->m_original, name, 0);
        };
        m_vfs.xAccess = [](sqlite3_vfs*, const char* name, int flags, int* result) {
            sqlite3_vfs* vfs = s_instance->m_original;
            return fails(false) ? SQLITE_IOERR_ACCESS : vfs->xAccess(vfs, name, flags, result);
        };
        sqlite3_vfs_register(&m_vfs, 1);
    }
    ~FaultyVfs() {
        sqlite3_vfs_unregister(&m_vfs);
        sqlite3_vfs_register(m_original, 1);
    }
    FaultyVfs(const FaultyVfs&) = delete;
    FaultyVfs& operator=(const FaultyVfs&) = delete;

    // What is on the disk for sure: of each file, its content at its last synchronisation.
    Disk disk() const {
        const Lock lock(m_mutex);
        return m_disk;
    }
    void clearDisk() {
        const Lock lock(m_mutex);
        m_disk.clear();
    }

    struct Syncs {
        int all = 0, here = 0; // those of the thread that asks
    };
    Syncs syncs() const {
        const Lock lock(m_mutex);
        Syncs syncs;
        for (const auto& [thread, count] : m_syncs) {
            syncs.all += count;
            syncs.here += thread == std::this_thread::get_id() ? count : 0;
        }
        return syncs;
    }

    // The n-th call from now on fails, counted from 1, and with `persistently` all after it.
    void arm(Fault fault, int n, bool persistently) {
        const Lock lock(m_mutex);
        m_fault = fault;
        m_countdown = n;
        m_persistently = persistently;
        m_hasFailed = false;
    }
    // Ends the faults. Whether there were any.
    bool disarm() {
        const Lock lock(m_mutex);
        m_countdown = 0;
        return m_hasFailed;
    }

private:
    using Lock = std::lock_guard<std::mutex>;
    using Methods = sqlite3_io_methods;
    struct OpenFile {
        QString path; // empty for a file without a name
        const Methods* original;
        Methods faulty;
    };
    static inline FaultyVfs* s_instance = nullptr;

    sqlite3_vfs* m_original;
    sqlite3_vfs m_vfs;
    mutable std::mutex m_mutex; // of what follows
    Disk m_disk;
    std::map<std::thread::id, int> m_syncs;
    std::map<sqlite3_file*, OpenFile> m_files; // those that have been closed stay until the next of that name
    Fault m_fault = Fault::ioError;
    int m_countdown = 0; // calls until the fault; 0 when none is to come
    bool m_persistently = false, m_hasFailed = false;

    static bool fails(bool needsSpace) {
        FaultyVfs& vfs = *s_instance;
        const Lock lock(vfs.m_mutex);
        if (vfs.m_countdown == 0 || (vfs.m_fault == Fault::diskFull && !needsSpace) ||
            --vfs.m_countdown > 0) {
            return false;
        }
        vfs.m_hasFailed = true;
        vfs.m_countdown = vfs.m_persistently ? 1 : 0;
        return true;
    }

    // A call that is passed on unless it is to fail.
    static const Methods& original(sqlite3_file* file) {
        const Lock lock(s_instance->m_mutex);
        return *s_instance->m_files[file].original;
    }
    template <auto method, int error, typename... Arguments>
    static int pass(sqlite3_file* file, Arguments... arguments) {
        return fails(false) ? error : (original(file).*method)(file, arguments...);
    }
    static int write(sqlite3_file* file, const void* bytes, int size, sqlite3_int64 offset) {
        const bool isHalf = fails(true);
        const int status = original(file).xWrite(file, bytes, isHalf ? size / 2 : size, offset);
        const Lock lock(s_instance->m_mutex);
        const int error = s_instance->m_fault == Fault::diskFull ? SQLITE_FULL : SQLITE_IOERR_WRITE;
        return isHalf ? error : status;
    }
    static int sync(sqlite3_file* file, int) {
        if (fails(false)) {
            return SQLITE_IOERR_FSYNC;
        }
        const Lock lock(s_instance->m_mutex);
        ++s_instance->m_syncs[std::this_thread::get_id()];
        const QString path = s_instance->m_files[file].path;
        if (QFile content(path); content.open(QIODevice::ReadOnly)) {
            s_instance->m_disk[path] = content.readAll();
        }
        return SQLITE_OK;
    }

    // The file is one of the original's, which finds its functions through a table that can be replaced.
    static int open(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* outFlags) {
        file->pMethods = nullptr;
        const QString path = QString::fromUtf8(name);
        if (fails((flags & SQLITE_OPEN_CREATE) != 0 && !QFile::exists(path))) {
            return SQLITE_CANTOPEN;
        }
        sqlite3_vfs* vfs = s_instance->m_original;
        const int status = vfs->xOpen(vfs, name, file, flags, outFlags);
        if (status == SQLITE_OK) {
            const Lock lock(s_instance->m_mutex);
            OpenFile& open = s_instance->m_files[file] = {path, file->pMethods, *file->pMethods};
            Methods& faulty = open.faulty;
            faulty.iVersion = 2; // the methods of later versions map the database itself, unused here
            faulty.xRead = pass<&Methods::xRead, SQLITE_IOERR_READ>;
            faulty.xWrite = write;
            faulty.xTruncate = pass<&Methods::xTruncate, SQLITE_IOERR_TRUNCATE>;
            faulty.xSync = sync;
            faulty.xFileSize = pass<&Methods::xFileSize, SQLITE_IOERR_FSTAT>;
            faulty.xLock = pass<&Methods::xLock, SQLITE_IOERR_LOCK>;
            faulty.xCheckReservedLock = pass<&Methods::xCheckReservedLock, SQLITE_IOERR_CHECKRESERVEDLOCK>;
            faulty.xShmMap = [](sqlite3_file* f, int region, int size, int extend, void volatile** memory) {
                return fails(extend != 0) ? SQLITE_IOERR_SHMMAP
                                          : original(f).xShmMap(f, region, size, extend, memory);
            };
            faulty.xShmLock = [](sqlite3_file* f, int offset, int count, int action) {
                return (action & SQLITE_SHM_LOCK) != 0 && fails(false) // giving a lock back does not fail
                           ? SQLITE_IOERR_SHMLOCK
                           : original(f).xShmLock(f, offset, count, action);
            };
            file->pMethods = &faulty;
        }
        return status;
    }
};

} // namespace corvatto::test
