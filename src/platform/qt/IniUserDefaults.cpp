#include "platform/qt/IniUserDefaults.h"

#include "base/Diagnostics.h"
#include "base/FileSystem.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <chrono>

#include <sys/stat.h>

namespace corvatto {
namespace {

constexpr int writeAttempts = 5;

} // namespace

IniUserDefaults::IniUserDefaults(const QString& settingsFile) : m_path(settingsFile) {
    if (m_path.isEmpty()) {
        printLine(u"[UserDefaults] ERROR: There is no home directory, settings are not kept.");
        return;
    }
    if (const auto error = createDirectories(QFileInfo(m_path).path())) {
        printLine(QStringLiteral("[UserDefaults] ERROR: Cannot create %1: %2")
                      .arg(error->path, error->description()));
    }
    for (const QString& path : {QFileInfo(m_path).path(), m_path}) {
        makePrivate(path);
    }
    load();
    if (!m_isReadable) {
        printLine(QStringLiteral("[UserDefaults] ERROR: Cannot read %1, the defaults hold.").arg(m_path));
    } else if (m_document.hasUnknownLines()) {
        printLine(QStringLiteral("[UserDefaults] ERROR: Some lines of %1 are no settings and are ignored.")
                      .arg(m_path));
    }
    // An editor saves in several steps; the file is looked at once, after the last of them.
    m_reload.setSingleShot(true);
    m_reload.setInterval(std::chrono::milliseconds(50));
    connect(&m_reload, &QTimer::timeout, this, &IniUserDefaults::fileChanged);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, &m_reload, qOverload<>(&QTimer::start));
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, &m_reload, qOverload<>(&QTimer::start));
    watch();
}

void IniUserDefaults::watch() {
    // Watching the directory notices a file that is created or replaced; watching the file, one that is
    // written in place.
    m_watcher.addPath(QFileInfo(m_path).path());
    if (QFileInfo::exists(m_path)) {
        m_watcher.addPath(m_path);
    }
}

void IniUserDefaults::fileChanged() {
    watch();
    if (stampOfFile() != m_stamp) { // else it is our own write, which has been announced, or another file
        load();
        Q_EMIT didChange();
    }
}

QVariant IniUserDefaults::storedObject(const QString& key) const {
    if (const auto unsaved = m_unsaved.constFind(key); unsaved != m_unsaved.constEnd()) {
        return *unsaved;
    }
    const auto stored = m_document.value(key);
    return stored ? QVariant(*stored) : QVariant();
}

void IniUserDefaults::setObject(const QString& key, const QVariant& value) {
    m_unsaved[key] = value.toString();
    if (!m_path.isEmpty()) {
        write();
    }
    Q_EMIT didChange();
}

IniUserDefaults::FileStamp IniUserDefaults::stampOfFile() const {
    struct stat status {};
    if (stat(QFile::encodeName(m_path).constData(), &status) != 0) {
        return {};
    }
    return {status.st_ino, status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

void IniUserDefaults::load() {
    m_stamp = stampOfFile(); // before reading: an edit in between is noticed as another one
    QFile file(m_path);
    const bool isOpen = file.open(QIODevice::ReadOnly);
    m_isReadable = isOpen || !file.exists();
    m_document = IniDocument(isOpen ? file.readAll() : QByteArray());
}

void IniUserDefaults::write() {
    // An edit that somebody makes while the disk is busy with ours is not overwritten.
    bool failed = false;
    int attemptsLeft = writeAttempts;
    for (bool isOvertaken = true; isOvertaken && attemptsLeft > 0; --attemptsLeft) {
        if (stampOfFile() != m_stamp) {
            load(); // an edit that has not been noticed yet
        }
        IniDocument changed = m_document;
        for (auto unsaved = m_unsaved.cbegin(); unsaved != m_unsaved.cend(); ++unsaved) {
            changed.setValue(unsaved.key(), unsaved.value());
        }
        // What cannot be read is not replaced.
        const auto error = m_isReadable ? writeFileAtomically(m_path, changed.text(),
                                                              [this] { return stampOfFile() == m_stamp; })
                                        : std::optional(FileError{EACCES, m_path, {}});
        failed = error.has_value();
        isOvertaken = failed && error->code == ECANCELED;
    }
    if (failed && !m_hasWriteFailed) {
        printLine(QStringLiteral("[UserDefaults] ERROR: Cannot write %1").arg(m_path));
    }
    m_hasWriteFailed = failed;
    if (!failed) {
        m_unsaved.clear();
        load();
    }
}

} // namespace corvatto
