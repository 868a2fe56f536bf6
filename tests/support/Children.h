// The processes that this one has started.
#pragma once

#include <sys/wait.h>

namespace corvatto::test {

// Whether all have ended, and been waited for.
inline bool allChildrenAreGone() {
    siginfo_t child{};
    return waitid(P_ALL, 0, &child, WEXITED | WNOHANG | WNOWAIT) != 0;
}

} // namespace corvatto::test
