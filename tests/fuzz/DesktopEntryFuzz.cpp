#include "Fuzz.h"
#include "platform/freedesktop/DesktopEntries.h"

#include <QFile>
#include <QTemporaryDir>

using namespace corvatto;

// Any file gives a name without line ends, or none.
void fuzz::desktopEntry(const QByteArray& input) {
    static const QTemporaryDir directory;
    QFile file(directory.filePath(QStringLiteral("app.desktop")));
    fuzz::require(file.open(QIODevice::WriteOnly));
    file.write(input);
    file.close();
    DesktopEntries entries({directory.path()}, {QStringLiteral("zh_CN"), QStringLiteral("zh")});
    for (const char* windowClass : {"App", "declared", "nobody"}) {
        const auto name = entries.nameForWindowClass(QString::fromLatin1(windowClass));
        fuzz::require(!name || (!name->isEmpty() && !name->contains(u'\n')));
    }
}
