// A desktop that keeps the addresses it is asked to open.
#pragma once

#include "platform/Workspace.h"

#include <QList>

namespace corvatto::test {

class FakeWorkspace : public Workspace {
public:
    QList<QUrl> opened;

    bool openURL(const QUrl& url) override {
        opened << url;
        return true;
    }
};

} // namespace corvatto::test
