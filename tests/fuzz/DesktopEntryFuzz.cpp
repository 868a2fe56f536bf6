#include "Fuzz.h"
#include "platform/freedesktop/DesktopEntries.h"

#include <QFile>
#include <QTemporaryDir>

using namespace corvatto;

namespace {

// Any file gives a name without line ends, or none.
void run(const QByteArray& input) {
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

} // namespace

fuzz::Target fuzz::desktopEntry() {
    return {{"[Desktop Entry]\nName=Editor\nName[zh_CN]=编辑器\nName[zh]=编\nStartupWMClass=Declared\n",
             "# comment\n[Desktop Action x]\nName=Wrong\n[Desktop Entry]\r\n Name = Spaces "
             "\r\nName[=x\nName[]=\n=\n",
             QByteArrayLiteral("[Desktop Entry]\nName=\xFF\xFE\0x\nStartupWMClass=\0\n")},
            run};
}
