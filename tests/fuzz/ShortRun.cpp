// Runs a fuzz target without libFuzzer, in a few seconds: its seeds, and the same mutations of them every
// time.
#include "Fuzz.h"

#include <QGuiApplication>

#include <cstdio>
#include <random>

namespace corvatto::fuzz {
namespace {

constexpr int mutationsPerSeed = 300;

class Mutator {
public:
    explicit Mutator(const QList<QByteArray>& seeds) : m_seeds(seeds) {}

    QByteArray mutated(QByteArray bytes) {
        for (quint32 steps = 1 + below(4); steps > 0; --steps) {
            const auto at = static_cast<qsizetype>(below(static_cast<quint32>(bytes.size()) + 1));
            switch (below(6)) {
            case 0:
                bytes.truncate(at);
                break;
            case 1:
                bytes.insert(at, interesting());
                break;
            case 2:
                bytes.replace(at, 4, interesting());
                break;
            case 3:
                bytes.remove(at, below(8));
                break;
            case 4:
                if (at < bytes.size()) {
                    bytes[at] = static_cast<char>(bytes[at] ^ (1 << below(8)));
                }
                break;
            default: {
                const QByteArray& other = m_seeds[below(static_cast<quint32>(m_seeds.size()))];
                bytes = bytes.first(at) + other.mid(below(static_cast<quint32>(other.size()) + 1));
            }
            }
        }
        return bytes;
    }

private:
    quint32 below(quint32 limit) { return static_cast<quint32>(m_random()) % limit; }

    QByteArray interesting() {
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
        return words[below(static_cast<quint32>(words.size()))];
    }

    const QList<QByteArray>& m_seeds;
    std::mt19937 m_random{1};
};

void run(const QByteArray& input) {
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.constData()),
                           static_cast<std::size_t>(input.size()));
}

} // namespace
} // namespace corvatto::fuzz

int main(int argc, char** argv) {
    using namespace corvatto::fuzz;
    const QGuiApplication application(argc, argv);
    const QList<QByteArray> seeds = corvatto::fuzz::seeds();
    Mutator mutator(seeds);
    for (const QByteArray& seed : seeds) {
        run(seed);
        for (int i = 0; i < mutationsPerSeed; ++i) {
            run(mutator.mutated(seed));
        }
    }
    std::printf("%lld seeds, %d mutations of each\n", static_cast<long long>(seeds.size()), mutationsPerSeed);
}
