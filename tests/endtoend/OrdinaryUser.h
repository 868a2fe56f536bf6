// What root runs, as in a container, runs as an ordinary user: sway refuses root, and root may read and write
// what its user may not.
#pragma once

namespace corvatto::test {

// Gives up root's privileges for good, if this process has them. Its working directory becomes that of the
// build: the programs there are started by relative paths, which an ordinary user reaches wherever the build
// is. `directory`, a path in the build, is created, and belongs to that user with all that is in it.
void becomeOrdinaryUser(const char* directory);

} // namespace corvatto::test
