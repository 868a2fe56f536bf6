// The part of every program with libFuzzer that starts it: `--write-seeds=DIRECTORY` fills a directory for it
// to start from.
#include "Fuzz.h"

#include <QCryptographicHash>
#include <QFile>
#include <QGuiApplication>

#include <cstdlib>

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);

int LLVMFuzzerInitialize(int* argc, char*** argv) {
    const QByteArray option("--write-seeds=");
    const QByteArray argument(*argc > 1 ? (*argv)[1] : "");
    if (argument.startsWith(option)) {
        for (const QByteArray& seed : corvatto::fuzz::seeds()) {
            const QByteArray name = QCryptographicHash::hash(seed, QCryptographicHash::Sha1).toHex();
            QFile file(QString::fromLocal8Bit(argument.sliced(option.size()) + '/' + name));
            if (!file.open(QIODevice::WriteOnly) || file.write(seed) != seed.size()) {
                std::exit(EXIT_FAILURE);
            }
        }
        std::exit(EXIT_SUCCESS);
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static const QGuiApplication application(*argc, *argv); // for fonts
    return 0;
}
