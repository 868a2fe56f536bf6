#include "base/Diagnostics.h"

#include <QByteArray>

#include <cstdio>

namespace corvatto {

void printLine(QStringView line) {
    QByteArray bytes = line.toUtf8();
    bytes.append('\n');
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stdout);
    std::fflush(stdout);
}

} // namespace corvatto
