// Makes file permissions hold in tests that run as root, which they otherwise would not.
#pragma once

#include <QFile>

#include <unistd.h>

namespace corvatto::test {

// While it lives, a process of root's has the rights of "nobody"; others keep theirs.
class WithoutPrivileges {
public:
    // The paths are handed over to whoever the process becomes.
    explicit WithoutPrivileges(const QStringList& paths) {
        constexpr uid_t nobody = 65534;
        for (const QString& path : m_wasRoot ? paths : QStringList()) {
            m_succeeded = chown(QFile::encodeName(path).constData(), nobody, nobody) == 0 && m_succeeded;
        }
        m_succeeded = m_succeeded && (!m_wasRoot || seteuid(nobody) == 0);
    }
    ~WithoutPrivileges() {
        if (m_wasRoot && seteuid(0) != 0) {
            abort();
        }
    }
    WithoutPrivileges(const WithoutPrivileges&) = delete;
    WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;

    bool succeeded() const { return m_succeeded; }

private:
    const bool m_wasRoot = geteuid() == 0;
    bool m_succeeded = true;
};

} // namespace corvatto::test
