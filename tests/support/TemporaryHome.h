// A home directory that lasts as long as the object, with $HOME and the XDG directories pointing into it.
#pragma once

#include <QString>
#include <QTemporaryDir>

namespace corvatto::test {

class TemporaryHome {
public:
    TemporaryHome();

    QString path() const { return m_directory.path(); }
    QString dataHome() const { return path() + QStringLiteral("/.local/share"); }
    QString configHome() const { return path() + QStringLiteral("/.config"); }

private:
    QTemporaryDir m_directory;
};

} // namespace corvatto::test
