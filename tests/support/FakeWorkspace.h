// A desktop on which the test decides what is in front.
#pragma once

#include "platform/Workspace.h"

namespace corvatto::test {

class FakeWorkspace : public Workspace {
public:
    QString frontmost;

    QString frontmostApplicationName() override { return frontmost; }
};

} // namespace corvatto::test
