// A desktop on which the test decides what is in front.
#pragma once

#include "platform/Workspace.h"

#include <QList>

namespace corvatto::test {

class FakeWorkspace : public Workspace {
public:
    QString frontmost;
    QList<QUrl> opened;

    QString frontmostApplicationName() override { return frontmost; }
    bool openURL(const QUrl& url) override {
        opened << url;
        return true;
    }
};

} // namespace corvatto::test
