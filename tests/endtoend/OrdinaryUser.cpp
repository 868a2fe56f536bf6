#include "OrdinaryUser.h"

#include <filesystem>
#include <stdexcept>

#include <grp.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace corvatto::test {

void becomeOrdinaryUser(const char* directory) {
    std::filesystem::current_path(BUILD_DIRECTORY);
    std::filesystem::create_directories(directory);
    if (geteuid() != 0) {
        return;
    }
    constexpr uid_t nobody = 65534;
    bool isDone = chown(directory, nobody, nobody) == 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(directory)) {
        isDone = isDone && lchown(entry.path().c_str(), nobody, nobody) == 0;
    }
    if (!isDone || setgroups(0, nullptr) != 0 || setgid(nobody) != 0 || setuid(nobody) != 0) {
        throw std::runtime_error("root cannot become nobody");
    }
    // Or /proc/self would be root's: temporary files get their names by it.
    prctl(PR_SET_DUMPABLE, 1);
}

} // namespace corvatto::test
