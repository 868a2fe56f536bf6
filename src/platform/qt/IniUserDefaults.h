// The settings in an INI file that people may edit, also while the program runs.
#pragma once

#include "platform/UserDefaults.h"

#include <QFileSystemWatcher>
#include <QSettings>
#include <QTimer>

#include <optional>

namespace corvatto {

class IniUserDefaults : public UserDefaults {
    Q_OBJECT

public:
    // `path` may be empty: the settings then last for the run.
    explicit IniUserDefaults(const QString& path);

    void setObject(const QString& key, const QVariant& value) override;

protected:
    QVariant storedObject(const QString& key) const override;

private:
    void write();
    void watch();
    void fileChanged();

    QString m_path;
    std::optional<QSettings> m_settings; // absent without a path
    QVariantMap m_kept;                  // what is set then
    QFileSystemWatcher m_watcher;
    QTimer m_reload;
    bool m_complained = false;
};

} // namespace corvatto
