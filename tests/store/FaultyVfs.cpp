#include "FaultyVfs.h"

#include <QFile>

#include <memory>
#include <new>

namespace corvatto::test {

namespace {

struct File : sqlite3_file {
    FaultyVfs* vfs;
    QString path; // empty for a file without a name
    std::unique_ptr<char[]> memory;
    sqlite3_file* original; // in `memory`
};

FaultyVfs& vfsOf(sqlite3_vfs* vfs) {
    return *static_cast<FaultyVfs*>(vfs->pAppData);
}

// A call that is passed on unless it is to fail.
template <auto method, int error, bool needsSpace = false, typename... Arguments>
int passOn(sqlite3_file* handle, Arguments... arguments) {
    auto& file = *static_cast<File*>(handle);
    if (file.vfs->fails(needsSpace)) {
        return error;
    }
    return (file.original->pMethods->*method)(file.original, arguments...);
}

// One that cannot fail, or whose failure nobody looks at.
template <auto method, typename Result, typename... Arguments>
Result alwaysPassOn(sqlite3_file* handle, Arguments... arguments) {
    sqlite3_file* original = static_cast<File*>(handle)->original;
    return (original->pMethods->*method)(original, arguments...);
}

using Methods = sqlite3_io_methods;

int closeFile(sqlite3_file* handle) {
    auto* file = static_cast<File*>(handle);
    const int status = file->original->pMethods->xClose(file->original);
    file->~File();
    return status;
}

int writeFile(sqlite3_file* handle, const void* bytes, int size, sqlite3_int64 offset) {
    auto& file = *static_cast<File*>(handle);
    const auto write = [&](int length) {
        return file.original->pMethods->xWrite(file.original, bytes, length, offset);
    };
    if (file.vfs->fails(true)) {
        write(size / 2);
        return file.vfs->fault() == FaultyVfs::Fault::diskFull ? SQLITE_FULL : SQLITE_IOERR_WRITE;
    }
    return write(size);
}

int syncFile(sqlite3_file* handle, int) {
    auto& file = *static_cast<File*>(handle);
    if (file.vfs->fails(false)) {
        return SQLITE_IOERR_FSYNC;
    }
    QFile content(file.path);
    if (content.open(QIODevice::ReadOnly)) {
        file.vfs->disk()[file.path] = content.readAll();
    }
    return SQLITE_OK;
}

int mapSharedMemory(sqlite3_file* handle, int region, int size, int extend, void volatile** memory) {
    auto& file = *static_cast<File*>(handle);
    if (file.vfs->fails(extend != 0)) {
        return SQLITE_IOERR_SHMMAP;
    }
    return file.original->pMethods->xShmMap(file.original, region, size, extend, memory);
}

// Giving a lock back does not fail.
int lockSharedMemory(sqlite3_file* handle, int offset, int count, int flags) {
    auto& file = *static_cast<File*>(handle);
    if ((flags & SQLITE_SHM_LOCK) != 0 && file.vfs->fails(false)) {
        return SQLITE_IOERR_SHMLOCK;
    }
    return file.original->pMethods->xShmLock(file.original, offset, count, flags);
}

constexpr Methods methods{
    2, // the methods of later versions map the database itself, which is not asked for
    closeFile,
    passOn<&Methods::xRead, SQLITE_IOERR_READ, false, void*, int, sqlite3_int64>,
    writeFile,
    passOn<&Methods::xTruncate, SQLITE_IOERR_TRUNCATE, false, sqlite3_int64>,
    syncFile,
    passOn<&Methods::xFileSize, SQLITE_IOERR_FSTAT, false, sqlite3_int64*>,
    passOn<&Methods::xLock, SQLITE_IOERR_LOCK, false, int>,
    alwaysPassOn<&Methods::xUnlock, int, int>,
    passOn<&Methods::xCheckReservedLock, SQLITE_IOERR_CHECKRESERVEDLOCK, false, int*>,
    alwaysPassOn<&Methods::xFileControl, int, int, void*>,
    alwaysPassOn<&Methods::xSectorSize, int>,
    alwaysPassOn<&Methods::xDeviceCharacteristics, int>,
    mapSharedMemory,
    lockSharedMemory,
    alwaysPassOn<&Methods::xShmBarrier, void>,
    alwaysPassOn<&Methods::xShmUnmap, int, int>,
    nullptr,
    nullptr,
};

int openFile(sqlite3_vfs* vfs, const char* name, sqlite3_file* handle, int flags, int* outFlags) {
    FaultyVfs& faulty = vfsOf(vfs);
    handle->pMethods = nullptr;
    const QString path = QString::fromUtf8(name);
    if (faulty.fails((flags & SQLITE_OPEN_CREATE) != 0 && !QFile::exists(path))) {
        return SQLITE_CANTOPEN;
    }
    sqlite3_vfs* original = faulty.original();
    auto memory = std::make_unique<char[]>(static_cast<std::size_t>(original->szOsFile));
    auto* file = reinterpret_cast<sqlite3_file*>(memory.get());
    const int status = original->xOpen(original, name, file, flags, outFlags);
    if (status == SQLITE_OK) {
        new (handle) File{{&methods}, &faulty, path, std::move(memory), file};
    }
    return status;
}

int deleteFile(sqlite3_vfs* vfs, const char* name, int) {
    FaultyVfs& faulty = vfsOf(vfs);
    if (faulty.fails(false)) {
        return SQLITE_IOERR_DELETE;
    }
    faulty.disk().remove(QString::fromUtf8(name));
    return faulty.original()->xDelete(faulty.original(), name, 0);
}

int accessFile(sqlite3_vfs* vfs, const char* name, int flags, int* result) {
    FaultyVfs& faulty = vfsOf(vfs);
    return faulty.fails(false) ? SQLITE_IOERR_ACCESS
                               : faulty.original()->xAccess(faulty.original(), name, flags, result);
}

} // namespace

FaultyVfs::FaultyVfs() : m_original(sqlite3_vfs_find(nullptr)), m_vfs(*m_original) {
    m_vfs.szOsFile = sizeof(File);
    m_vfs.zName = "faulty";
    m_vfs.pAppData = this;
    m_vfs.xOpen = openFile;
    m_vfs.xDelete = deleteFile;
    m_vfs.xAccess = accessFile;
    sqlite3_vfs_register(&m_vfs, 1);
}

FaultyVfs::~FaultyVfs() {
    sqlite3_vfs_unregister(&m_vfs);
    sqlite3_vfs_register(m_original, 1);
}

void FaultyVfs::arm(Fault fault, int n, bool persistently) {
    m_fault = fault;
    m_countdown = n;
    m_persistently = persistently;
    m_hasFailed = false;
}

bool FaultyVfs::disarm() {
    m_countdown = 0;
    return m_hasFailed;
}

bool FaultyVfs::fails(bool needsSpace) {
    if (m_countdown == 0 || (m_fault == Fault::diskFull && !needsSpace) || --m_countdown > 0) {
        return false;
    }
    m_hasFailed = true;
    m_countdown = m_persistently ? 1 : 0;
    return true;
}

} // namespace corvatto::test
