// Collects what is written to standard output while the object lives. When the test has failed, that is
// written out at the end, since the reports of failures are among it.
#pragma once

#include <QTemporaryFile>

#include <gtest/gtest.h>

#include <cstdio>
#include <unistd.h>

namespace corvatto::test {

class CapturedOutput {
public:
    CapturedOutput() {
        std::fflush(stdout);
        m_file.open();
        dup2(m_file.handle(), STDOUT_FILENO);
    }
    ~CapturedOutput() {
        const QByteArray all = text();
        dup2(m_original, STDOUT_FILENO);
        close(m_original);
        if (::testing::Test::HasFailure()) {
            // What GoogleTest had to say about the failure was collected too.
            std::fwrite(all.constData(), 1, static_cast<std::size_t>(all.size()), stdout);
            std::fflush(stdout);
        }
    }
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;

    // Everything written so far.
    QByteArray text() {
        std::fflush(stdout);
        m_file.seek(0);
        const QByteArray all = m_file.readAll();
        // The descriptor is shared with standard output: writing goes on at the end.
        m_file.seek(m_file.size());
        return all;
    }

private:
    QTemporaryFile m_file;
    const int m_original = dup(STDOUT_FILENO);
};

} // namespace corvatto::test
