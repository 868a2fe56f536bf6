#include "support/TemporaryHome.h"

namespace corvatto::test {

TemporaryHome::TemporaryHome() {
    qputenv("HOME", path().toUtf8());
    qputenv("XDG_DATA_HOME", dataHome().toUtf8());
    qputenv("XDG_CONFIG_HOME", configHome().toUtf8());
    qputenv("XDG_CACHE_HOME", (path() + QStringLiteral("/.cache")).toUtf8());
}

} // namespace corvatto::test
