// The program is killed at random moments while others copy, again and again, and nothing that was seen in
// the history is ever missing from it.
#include "EndToEndTest.h"

#include <QSet>

#include <cstdio>
#include <random>

namespace corvatto::test {

namespace {

class KillTest : public X11Test {
protected:
    // By another process, so that the moment has nothing to do with what this one does.
    Process killAfter(double seconds) {
        const QByteArray command =
            "sleep " + QByteArray::number(seconds) + "; kill -KILL " + QByteArray::number(program->pid());
        return {"sh", {"-c", command}, desktop.environment(), true};
    }

    // Copies something new, sometimes an image, and returns what its entry will be known by.
    QByteArray copySomething() {
        const QByteArray number = QByteArray::number(++m_number);
        if (m_number % 3 != 0) {
            const QByteArray text = "text " + number + QByteArray(m_number % 5 == 0 ? 300'000 : 0, 'x');
            copyText(text);
            return text;
        }
        const QSize size(600 + m_number, 400);
        copy({{"image/png", encoded(testImage(size), "png")}});
        return QStringLiteral("Image %1×%2").arg(size.width()).arg(size.height()).toUtf8();
    }
    QSet<QByteArray> namesStored() const {
        QSet<QByteArray> names;
        for (const auto& row : database.rows()) {
            names << (row.type == "image" ? row.preview : row.content);
        }
        return names;
    }

    void expectWholeFiles() const {
        for (const auto& row : database.rows()) {
            if (row.type == "image") {
                const QImage image = decoded(bytesOf(row.content));
                EXPECT_TRUE(image == testImage(image.size()) && image.width() > 600) << row.preview.data();
                EXPECT_FALSE(decoded(bytesOf(row.thumbnail)).isNull()) << row.preview.data();
            }
        }
    }

    int m_number = 0;
};

} // namespace

TEST_F(KillTest, NothingThatWasStoredIsLost) {
    const unsigned seed = std::random_device()();
    std::printf("seed %u\n", seed);
    std::minstd_rand random(seed);
    constexpr int rounds = 14, limitedFrom = 9, limit = 20;
    QList<QByteArray> stored; // as seen from here
    for (int round = 0; round < rounds; ++round) {
        if (round == limitedFrom) { // from now on, entries and their files are removed as well
            ASSERT_GE(stored.size(), limit);
            setSetting("maxItemCount", limit);
        }
        launch();
        const Process killer = killAfter(0.5 + static_cast<double>(random() % 2500) / 1000);
        while (program->isRunning()) {
            const QByteArray name = copySomething();
            bool seen = false;
            ASSERT_TRUE(soon([&] { return (seen = namesStored().contains(name)) || !program->isRunning(); }));
            if (seen) {
                stored << name;
            }
        }
        EXPECT_TRUE(database.isWhole());
        expectWholeFiles();
        const QSet<QByteArray> names = namesStored();
        if (round < limitedFrom) {
            EXPECT_TRUE(names.contains(QSet<QByteArray>(stored.begin(), stored.end())));
        } else {
            EXPECT_GE(names.size(), limit);
            EXPECT_TRUE(names.contains(stored.last()));
        }
    }
    std::printf("%lld of %d copies were seen\n", static_cast<long long>(stored.size()), m_number);
    launch();
    record("after all");
    EXPECT_TRUE(soon([this] { return database.rows().size() == limit; })); // which follows the recording
}

} // namespace corvatto::test
