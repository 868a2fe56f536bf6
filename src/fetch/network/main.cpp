// corvatto-fetch ADDRESS: fetches a document and writes the outcome to standard output. A process of its own,
// so that the program that stays does not keep Qt Network, and all that it loads, for a request a day.
#include "fetch/network/Download.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>

using namespace corvatto;

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QUrl url = QUrl::fromEncoded(argc > 1 ? argv[1] : "");
    const Download download(url, {}, [](const FetchOutcome& outcome) {
        const QByteArray bytes = encoded(outcome);
        const auto size = static_cast<std::size_t>(bytes.size());
        const bool isWritten =
            std::fwrite(bytes.constData(), 1, size, stdout) == size && std::fflush(stdout) == 0;
        QCoreApplication::exit(isWritten ? EXIT_SUCCESS : EXIT_FAILURE);
    });
    return QCoreApplication::exec();
}
