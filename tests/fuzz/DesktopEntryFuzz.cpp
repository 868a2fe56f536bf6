#include "Fuzz.h"
#include "platform/freedesktop/DesktopEntries.h"

#include <QFile>
#include <QTemporaryDir>

using namespace corvatto;

QList<QByteArray> fuzz::seeds() {
    return {"[Desktop Entry]\nName=Editor\nName[zh_CN]=编辑器\nName[zh]=编\nStartupWMClass=Declared\n",
            "# comment\n[Desktop Action x]\nName=Wrong\n[Desktop Entry]\r\n Name = Spaces "
            "\r\nName[=x\nName[]=\n=\n",
            QByteArrayLiteral("[Desktop Entry]\nName=\xFF\xFE\0x\nStartupWMClass=\0\n")};
}

// Any file gives a name without line ends, or none.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const QTemporaryDir directory;
    QFile file(directory.filePath(QStringLiteral("app.desktop")));
    fuzz::require(file.open(QIODevice::WriteOnly));
    file.write(fuzz::bytesOf(data, size));
    file.close();
    DesktopEntries entries({directory.path()}, {QStringLiteral("zh_CN"), QStringLiteral("zh")});
    for (const char* windowClass : {"App", "declared", "nobody"}) {
        if (const auto name = entries.nameForWindowClass(QString::fromLatin1(windowClass))) {
            fuzz::require(!name->isEmpty() && !name->contains(u'\n'));
        }
    }
    return 0;
}
