// Collects what is written to standard output while the object lives. When the test has failed, that is
// written out at the end, since the reports of failures are among it.
#pragma once

#include <QByteArray>
#include <QTemporaryFile>

namespace corvatto::test {

class CapturedOutput {
public:
    CapturedOutput();
    ~CapturedOutput();
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;

    // Everything written so far.
    QByteArray text();

private:
    QTemporaryFile m_file;
    int m_original = -1;
};

} // namespace corvatto::test
