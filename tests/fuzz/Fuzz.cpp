// Runs the target that the first argument names. Linked with libFuzzer, it leaves the rest to that; else it
// runs the seeds in the directory that the second one names, and the same mutations of them every time.
#include "Fuzz.h"

#include <QDir>
#include <QGuiApplication>

#include <map>
#include <random>
#include <string>

using namespace corvatto;

namespace {

using Target = void (*)(const QByteArray&);

Target targetOf(const char* name) {
    static const std::map<std::string, Target> targets{{"desktop_entry", fuzz::desktopEntry},
                                                       {"image", fuzz::image},
                                                       {"text", fuzz::text},
                                                       {"update", fuzz::update},
                                                       {"uri_list", fuzz::uriList}};
    return targets.at(name);
}

} // namespace

#ifdef CORVATTO_FUZZ

namespace {
Target target;
}

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static const QGuiApplication application(*argc, *argv); // for fonts
    target = targetOf((*argv)[1]);
    (*argv)[1] = (*argv)[0]; // libFuzzer knows its own arguments only
    ++*argv;
    --*argc;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    target(QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    return 0;
}

#else

namespace {

constexpr int mutationsPerSeed = 300;

QByteArray mutated(QByteArray bytes, const QList<QByteArray>& seeds) {
    static std::mt19937 random(1);
    const auto below = [](qsizetype limit) {
        return static_cast<qsizetype>(random()) % limit;
    };
    static const QByteArrayList words{QByteArray(4, '\0'),
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
        const QByteArray& word = words[below(words.size())];
        const auto flipped = static_cast<char>(at < bytes.size() ? bytes[at] ^ (1 << below(8)) : 0);
        // So many bytes give way to others.
        const std::pair<qsizetype, QByteArray> changes[] = {
            {bytes.size(), {}}, {0, word},         {4, word},
            {below(8), {}},     {1, {1, flipped}}, {bytes.size(), other.mid(below(other.size() + 1))}};
        const auto& [count, replacement] = changes[below(std::size(changes))];
        bytes.replace(at, count, replacement);
    }
    return bytes;
}

} // namespace

int main(int argc, char** argv) {
    const QGuiApplication application(argc, argv);
    const Target target = targetOf(argv[1]);
    QList<QByteArray> seeds;
    for (const QFileInfo& seed : QDir(QString::fromLocal8Bit(argv[2])).entryInfoList(QDir::Files)) {
        QFile file(seed.filePath());
        fuzz::require(file.open(QIODevice::ReadOnly));
        seeds.append(file.readAll());
    }
    fuzz::require(!seeds.isEmpty());
    for (const QByteArray& seed : seeds) {
        target(seed);
        for (int i = 0; i < mutationsPerSeed; ++i) {
            target(mutated(seed, seeds));
        }
    }
}

#endif
