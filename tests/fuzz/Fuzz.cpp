// Runs the target that the first argument names: its seeds, and the same mutations of them every time. Linked
// with libFuzzer, it leaves the rest to that, or writes the seeds into a directory: TARGET --write-seeds
// DIRECTORY.
#include "Fuzz.h"

#include <QFile>
#include <QGuiApplication>

#include <cstdlib>
#include <map>
#include <random>
#include <string>

using namespace corvatto;

namespace {

const fuzz::Target& target(const char* name = nullptr) {
    static const std::map<std::string, fuzz::Target (*)()> all{{"desktop_entry", fuzz::desktopEntry},
                                                               {"image", fuzz::image},
                                                               {"text", fuzz::text},
                                                               {"update", fuzz::update},
                                                               {"uri_list", fuzz::uriList}};
    static const fuzz::Target chosen = all.at(name)();
    return chosen;
}

#ifdef CORVATTO_FUZZ

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static const QGuiApplication application(*argc, *argv); // for fonts
    const QList<QByteArray>& seeds = target(*argc > 1 ? (*argv)[1] : "").seeds;
    if (*argc > 3 && qstrcmp((*argv)[2], "--write-seeds") == 0) {
        for (qsizetype i = 0; i < seeds.size(); ++i) {
            QFile file(QString::fromLocal8Bit((*argv)[3]) + u'/' + QString::number(i));
            fuzz::require(file.open(QIODevice::WriteOnly) && file.write(seeds[i]) == seeds[i].size());
        }
        std::exit(EXIT_SUCCESS);
    }
    std::swap((*argv)[0], (*argv)[1]); // libFuzzer does not know the name
    ++*argv;
    --*argc;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    target().run(QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    return 0;
}

#else

std::mt19937 random(1);

qsizetype below(qsizetype limit) {
    return static_cast<qsizetype>(random()) % limit;
}

QByteArray mutated(QByteArray bytes, const QList<QByteArray>& seeds) {
    static const QList<QByteArray> words{QByteArray(4, '\0'),
                                         QByteArray(4, '\xFF'),
                                         "\xFF\xFF\xFF\x7F",
                                         "\x7F\xFF\xFF\xFF",
                                         "\xFF\xD9",
                                         "%",
                                         "\n",
                                         "[",
                                         "]",
                                         "=",
                                         "\"",
                                         "\xED\xA0\x80"};
    for (qsizetype steps = 1 + below(4); steps > 0; --steps) {
        const qsizetype at = below(bytes.size() + 1);
        const QByteArray& other = seeds[below(seeds.size())];
        const auto bit = static_cast<char>(at < bytes.size() ? bytes[at] ^ (1 << below(8)) : 0);
        // Takes some bytes away and puts others there.
        const std::pair<qsizetype, QByteArray> changes[] = {
            {bytes.size(), {}},
            {0, words[below(words.size())]},
            {4, words[below(words.size())]},
            {below(8), {}},
            {1, QByteArray(1, bit)},
            {bytes.size(), other.mid(below(other.size() + 1))},
        };
        const auto& [length, replacement] = changes[below(std::size(changes))];
        bytes.replace(at, length, replacement);
    }
    return bytes;
}

} // namespace

int main(int argc, char** argv) {
    const QGuiApplication application(argc, argv);
    const fuzz::Target& chosen = target(argc > 1 ? argv[1] : "");
    for (const QByteArray& seed : chosen.seeds) {
        chosen.run(seed);
        for (int i = 0; i < 300; ++i) {
            chosen.run(mutated(seed, chosen.seeds));
        }
    }
}

#endif
