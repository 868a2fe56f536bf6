#include "command/StandardDescriptors.h"

#include <fcntl.h>
#include <unistd.h>

namespace corvatto {

void openClosedStandardDescriptors() {
    int opened = -1;
    do { // always the lowest free number
        opened = open("/dev/null", O_RDWR);
    } while (opened >= 0 && opened <= STDERR_FILENO);
    if (opened >= 0) {
        close(opened);
    }
}

} // namespace corvatto
