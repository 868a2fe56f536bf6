#include "Process.h"

#include <QFile>

#include <csignal>
#include <iostream>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/stat.h>

namespace corvatto::test {

Process::Process(const QByteArray& program, const QByteArrayList& arguments,
                 const QProcessEnvironment& environment, bool isScenery) {
    m_output.open();
    m_errors.open();
    m_process.setProcessEnvironment(environment);
    m_process.setStandardOutputFile(m_output.fileName());
    m_process.setStandardErrorFile(isScenery ? QProcess::nullDevice() : m_errors.fileName());
    m_process.setChildProcessModifier([] {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        umask(022); // what many desktops start programs with: private files are the program's own doing
    });
    QStringList texts;
    for (const QByteArray& argument : arguments) {
        texts.append(QString::fromUtf8(argument));
    }
    m_process.start(QString::fromUtf8(program), texts);
    if (!m_process.waitForStarted()) {
        throw std::runtime_error("cannot start " + program.toStdString());
    }
}

Process::~Process() {
    stop();
    std::cerr << errors().constData();
}

bool Process::isRunning() {
    m_process.waitForFinished(0);
    return m_process.state() == QProcess::Running;
}

QByteArray Process::written(const QTemporaryFile& to) {
    QFile file(to.fileName());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

std::optional<int> Process::stop() {
    m_process.terminate();
    return exitStatus();
}

std::optional<int> Process::exitStatus() {
    if (m_process.state() != QProcess::NotRunning && !m_process.waitForFinished(20'000)) {
        m_process.kill();
        m_process.waitForFinished();
    }
    return m_process.exitStatus() == QProcess::NormalExit ? std::optional(m_process.exitCode())
                                                          : std::nullopt;
}

} // namespace corvatto::test
