// A home directory that lasts as long as the object, with $HOME and the XDG directories pointing into it.
#pragma once

#include <QTemporaryDir>

namespace corvatto::test {

class TemporaryHome {
public:
    TemporaryHome() {
        qputenv("HOME", m_directory.path().toUtf8());
        qputenv("XDG_DATA_HOME", m_directory.filePath(QStringLiteral(".local/share")).toUtf8());
        qputenv("XDG_CONFIG_HOME", m_directory.filePath(QStringLiteral(".config")).toUtf8());
        qputenv("XDG_CACHE_HOME", m_directory.filePath(QStringLiteral(".cache")).toUtf8());
    }

private:
    QTemporaryDir m_directory;
};

} // namespace corvatto::test
