#include "update/FetchProcess.h"

#include <csignal>
#include <utility>

#include <sys/prctl.h>
#include <unistd.h>

namespace corvatto {
namespace {

// In the process that becomes the helper: it ends with the program, stays away from the terminal, and gets
// none of the descriptors that a library may have opened to be inherited.
void detach() {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    setsid();
    close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
}

FetchError failure(const QString& detail) {
    return FetchError::loading(FetchError::unknown, detail);
}

} // namespace

FetchProcess::FetchProcess(const FetchHelper& helper, const QUrl& url, const FetchLimits& limits)
    : m_mostBytes(longestOutcomeLine + limits.bytes), m_process(new QProcess) {
    m_process->setProgram(helper.path);
    m_process->setArguments({QString::fromLatin1(url.toEncoded())});
    m_process->setProcessEnvironment(helper.environment);
    m_process->setStandardInputFile(QProcess::nullDevice());
    m_process->setStandardErrorFile(QProcess::nullDevice());
    m_process->setChildProcessModifier(detach);
    connect(m_process, &QProcess::readyReadStandardOutput, this, &FetchProcess::read);
    connect(m_process, &QProcess::finished, this, &FetchProcess::ended);
    connect(m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            settle(failure(QStringLiteral("下载程序无法启动")));
        }
    });
    m_guard.setSingleShot(true);
    connect(&m_guard, &QTimer::timeout, this, [this] { settle(FetchError::loading(FetchError::timedOut)); });
    m_guard.start(limits.resource + grace);
    m_process->start(QIODevice::ReadOnly);
}

FetchProcess::~FetchProcess() {
    m_process->disconnect(this);
    if (m_process->state() == QProcess::NotRunning) {
        m_process->deleteLater();
        return;
    }
    // Deleting it now would wait for the end. Without an event loop, as at the end of the program, it stays.
    connect(m_process, &QProcess::stateChanged, m_process,
            [process = m_process](QProcess::ProcessState state) {
                if (state == QProcess::NotRunning) {
                    process->deleteLater();
                }
            });
    m_process->kill();
}

void FetchProcess::read() {
    m_answer += m_process->readAllStandardOutput();
    if (m_answer.size() > m_mostBytes) {
        settle(failure(QStringLiteral("下载程序的结果无效")));
    }
}

void FetchProcess::ended(int exitCode, QProcess::ExitStatus exitStatus) {
    read();
    auto outcome = decodedOutcome(m_answer);
    if (exitStatus != QProcess::NormalExit || exitCode != EXIT_SUCCESS || !outcome) {
        outcome = failure(QStringLiteral("下载程序的结果无效"));
    }
    settle(*std::move(outcome));
}

void FetchProcess::settle(FetchOutcome outcome) {
    if (m_outcome) {
        return;
    }
    m_outcome = std::move(outcome);
    m_guard.stop();
    m_process->disconnect(this);
    // Queued, because this may be called by the process, which the resumed coroutine gives up.
    QMetaObject::invokeMethod(this, &FetchProcess::resume, Qt::QueuedConnection);
}

void FetchProcess::cancel() {
    settle(FetchError::loading(FetchError::cancelled));
    resume();
}

void FetchProcess::resume() {
    if (m_awaiting) {
        std::exchange(m_awaiting, {}).resume(); // and this may be gone
    }
}

FetchResponse FetchProcess::takeResponse() {
    if (const FetchError* error = std::get_if<FetchError>(&*m_outcome)) {
        throw FetchError(*error);
    }
    return std::get<FetchResponse>(*std::move(m_outcome));
}

} // namespace corvatto
