#include "support/CapturedOutput.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <unistd.h>

namespace corvatto::test {

CapturedOutput::CapturedOutput() {
    std::fflush(stdout);
    m_file.open();
    m_original = dup(STDOUT_FILENO);
    dup2(m_file.handle(), STDOUT_FILENO);
}

CapturedOutput::~CapturedOutput() {
    const QByteArray all = text();
    dup2(m_original, STDOUT_FILENO);
    close(m_original);
    if (::testing::Test::HasFailure()) {
        // What GoogleTest had to say about the failure was collected too.
        std::fwrite(all.constData(), 1, static_cast<std::size_t>(all.size()), stdout);
        std::fflush(stdout);
    }
}

QByteArray CapturedOutput::text() {
    std::fflush(stdout);
    m_file.seek(0);
    const QByteArray all = m_file.readAll();
    // The descriptor is shared with standard output: writing goes on at the end.
    m_file.seek(m_file.size());
    return all;
}

} // namespace corvatto::test
