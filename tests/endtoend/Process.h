// Other processes of a test, and waiting for what they do.
#pragma once

#include "support/Eventually.h"

#include <QByteArray>
#include <QProcess>
#include <QTemporaryFile>
#include <QThread>

#include <optional>

namespace corvatto::test {

// eventually() with a look every 10 ms, which leaves the processor to those who are waited for. The deadline
// is for a machine under heavy load.
template <typename Condition>
bool soon(Condition condition, std::chrono::milliseconds deadline = std::chrono::seconds(20)) {
    const auto look = [&condition] {
        const bool holds = condition();
        if (!holds) {
            QThread::msleep(10);
        }
        return holds;
    };
    return eventually(look, deadline);
}

// A child process with its output in files. It dies with the test, however the test ends.
class Process {
public:
    // Starts `program` at once. What it says on standard error is shown at its end, unless it is scenery.
    // Throws std::runtime_error when it does not start.
    Process(const QByteArray& program, const QByteArrayList& arguments,
            const QProcessEnvironment& environment, bool isScenery = false);
    ~Process();

    qint64 pid() const { return m_process.processId(); }
    bool isRunning();
    QByteArray output() const { return written(m_output); } // so far
    QByteArray errors() const { return written(m_errors); } // what it has written to standard error
    bool hasPrinted(const QByteArray& line) const { return output().split('\n').contains(line); }
    // Ends it as a session does, and returns its exit status: nothing when a signal had to.
    std::optional<int> stop();
    // The same for one that ends by itself.
    std::optional<int> exitStatus();

private:
    static QByteArray written(const QTemporaryFile& to);

    QTemporaryFile m_output, m_errors;
    QProcess m_process;
};

} // namespace corvatto::test
