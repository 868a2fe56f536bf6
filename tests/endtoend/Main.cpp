// The entry of the end-to-end tests, which root runs as an ordinary user: sway refuses root, and root may
// read and write what its user may not.
#include <QCoreApplication>

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>

#include <grp.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace {

// Gives up root's privileges for good. The working directory becomes that of the build: the programs there
// are started by relative paths, which an ordinary user reaches wherever the build is.
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

} // namespace

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    becomeOrdinaryUser();
    // For pictures and processes only: the tests look at the desktop through connections of their own.
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
