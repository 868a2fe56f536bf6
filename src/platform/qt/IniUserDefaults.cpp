#include "platform/qt/IniUserDefaults.h"

#include "base/Diagnostics.h"
#include "base/FileSystem.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <chrono>

#include <sys/stat.h>

namespace corvatto {

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
    m_stamp = stampOfFile();
    m_settings.emplace(m_path, QSettings::IniFormat);
    m_settings->allKeys(); // parses all of the file; until then its errors are not known
    if (m_settings->status() == QSettings::FormatError) {
        printLine(QStringLiteral("[UserDefaults] ERROR: Some lines of %1 are no settings and are ignored.")
                      .arg(m_path));
    } else if (m_settings->status() != QSettings::NoError) {
        printLine(QStringLiteral("[UserDefaults] ERROR: Cannot read %1, the defaults hold.").arg(m_path));
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
    const FileStamp stamp = stampOfFile();
    if (stamp == m_stamp) {
        return; // our own write, which has been announced, or another file of the directory
    }
    if (stamp.size == m_stamp.size) {
        // QSettings takes a file for unchanged if size and millisecond are those that it knows.
        QFile file(m_path);
        if (file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly)) {
            file.setFileTime(QDateTime::currentDateTime(), QFileDevice::FileModificationTime);
        }
    }
    m_stamp = stampOfFile();
    m_settings->sync();
    Q_EMIT didChange();
}

QVariant IniUserDefaults::storedObject(const QString& key) const {
    return m_settings ? m_settings->value(key) : m_unsaved.value(key);
}

void IniUserDefaults::setObject(const QString& key, const QVariant& value) {
    if (m_settings) {
        m_settings->setValue(key, value);
        write();
    } else {
        m_unsaved[key] = value;
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

void IniUserDefaults::write() {
    m_settings->sync();
    // Before the second synchronisation, just below, which reads an edit made between the two.
    m_stamp = stampOfFile();
    // The status of a QSettings keeps its first error for good; a second object on the same file shares what
    // is still unwritten, and tries again.
    const bool failed = QSettings(m_path, QSettings::IniFormat).status() != QSettings::NoError;
    if (failed && !m_hasWriteFailed) {
        printLine(QStringLiteral("[UserDefaults] ERROR: Cannot write %1").arg(m_path));
    }
    m_hasWriteFailed = failed;
}

} // namespace corvatto
