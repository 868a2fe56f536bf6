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
    for (qsizetype steps = 1 + below(4); steps > 0; --steps) {
        // A part gives way to one of a seed, or all that follows to nothing; and a bit flips.
        const QByteArray& other = seeds[below(seeds.size())];
        const qsizetype count = below(4) == 0 ? bytes.size() : below(8);
        bytes.replace(below(bytes.size() + 1), count, other.mid(below(other.size() + 1), count));
        if (!bytes.isEmpty()) {
            bytes[below(bytes.size())] ^= static_cast<char>(1 << below(8));
        }
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
