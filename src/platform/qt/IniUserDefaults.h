// The settings in an INI file that people may edit, also while the program runs. Its comments, its order and
// whatever else is in it stay as they are.
#pragma once

#include "platform/UserDefaults.h"
#include "platform/qt/IniDocument.h"

#include <QFileSystemWatcher>
#include <QMap>
#include <QTimer>

namespace corvatto {

class IniUserDefaults : public UserDefaults {
    Q_OBJECT

public:
    // The path may be empty: the settings then last for the run.
    explicit IniUserDefaults(const QString& settingsFile);

    void setObject(const QString& key, const QVariant& value) override;

protected:
    QVariant storedObject(const QString& key) const override;

private:
    // Tells one content of the file from the next. Default-constructed when there is no file.
    struct FileStamp {
        quint64 inode = 0;                             // another one whenever the file is replaced
        qint64 size = 0, seconds = 0, nanoseconds = 0; // the times are those of the last modification
        bool operator==(const FileStamp&) const = default;
    };

    void load();
    void write();
    void watch();
    void fileChanged();
    FileStamp stampOfFile() const;

    QString m_path;
    IniDocument m_document;           // as it is on the disk
    QMap<QString, QString> m_unsaved; // what could not be written yet
    QFileSystemWatcher m_watcher;
    QTimer m_reload;
    FileStamp m_stamp;        // of what is in m_document
    bool m_isReadable = true; // a file that does not exist is
    bool m_hasWriteFailed = false;
};

} // namespace corvatto
