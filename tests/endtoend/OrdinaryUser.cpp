#include "OrdinaryUser.h"

#include <filesystem>
#include <stdexcept>

#include <grp.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace corvatto::test {

void becomeOrdinaryUser() {
    std::filesystem::current_path(BUILD_DIRECTORY);
    std::filesystem::create_directories(SCREENSHOT_DIRECTORY);
    if (geteuid() != 0) {
        return;
    }
    constexpr uid_t nobody = 65534;
    if (chown(SCREENSHOT_DIRECTORY, nobody, nobody) != 0 || setgroups(0, nullptr) != 0 ||
        setgid(nobody) != 0 || setuid(nobody) != 0) {
        throw std::runtime_error("root cannot become nobody");
    }
    // Or /proc/self would be root's: temporary files get their names by it.
    prctl(PR_SET_DUMPABLE, 1);
}

} // namespace corvatto::test
