// Fills an empty history with entries that look like a user's, always the same for the same seed.
//
//   generate_history --directory=DIR [--entries=N] [--text-bytes=N] [--images=N] [--seed=N]
//
//       --directory   where "Corvatto" is created: what XDG_DATA_HOME is to be for the program
//       --entries     how many entries. 1000 unless given
//       --text-bytes  the mean size of a text, in bytes of UTF-8; each has between half and one and a
//                     half times as many. 300 unless given
//       --images      how many entries are images, with files of 640x400 pixels: every tenth entry,
//                     beginning with the newest, as long as there are any. 10 unless given
//       --seed        1 unless given
//
// Each twentieth of the other entries is a list of files. The newest entry is a minute old, and each other a
// minute older than the one before. The word "zyzzyva" is in no entry, "the" in nearly every text.
#include "capture/ImageStorage.h"
#include "store/ClipboardStore.h"
#include "store/ContentHash.h"

#include <QColor>
#include <QCommandLineParser>
#include <QDateTime>
#include <QGuiApplication>

#include <sqlite3.h>

#include <cstdio>
#include <random>

#include <sys/stat.h>

using namespace corvatto;

namespace {

class NoSettings : public UserDefaults {
public:
    void setObject(const QString&, const QVariant&) override {}

protected:
    QVariant storedObject(const QString&) const override { return {}; }
};

[[noreturn]] void fail(const char* what) {
    std::fprintf(stderr, "generate_history: %s\n", what);
    std::exit(EXIT_FAILURE);
}

struct Options {
    QString directory;
    qint64 entries, textBytes, images;
    quint64 seed;
};

Options optionsOf(const QCoreApplication& application) {
    QCommandLineParser parser;
    parser.addHelpOption();
    const auto text = QStringLiteral("text");
    parser.addOption({QStringLiteral("directory"), {}, text});
    parser.addOption({QStringLiteral("entries"), {}, text, QStringLiteral("1000")});
    parser.addOption({QStringLiteral("text-bytes"), {}, text, QStringLiteral("300")});
    parser.addOption({QStringLiteral("images"), {}, text, QStringLiteral("10")});
    parser.addOption({QStringLiteral("seed"), {}, text, QStringLiteral("1")});
    parser.process(application);
    const auto number = [&parser](const char* name) {
        bool ok = false;
        const qint64 value = parser.value(QLatin1String(name)).toLongLong(&ok);
        return ok && value >= 0 ? value : (fail("a number is needed"), 0);
    };
    const QString directory = parser.value(QStringLiteral("directory"));
    if (!directory.startsWith(u'/')) {
        fail("--directory needs an absolute path");
    }
    return {directory, number("entries"), number("text-bytes"), number("images"),
            static_cast<quint64>(number("seed"))};
}

class Generator {
public:
    explicit Generator(quint64 seed) : m_random(seed) {}

    // The number makes it unlike every other.
    QByteArray text(qint64 number, qint64 meanBytes) {
        QByteArray text = QByteArray::number(number) + ' ';
        const auto size = meanBytes / 2 + below(meanBytes + 1);
        while (text.size() < size) {
            text += words[below(std::size(words))];
            text += below(12) == 0 ? '\n' : ' ';
        }
        return text;
    }

    QByteArray files(qint64 number) {
        QByteArray files;
        for (qint64 file = below(4); file >= 0; --file) {
            files += "/home/user/documents/" + QByteArray::number(number) + '/' +
                     words[below(std::size(words))] + QByteArray::number(file) + ".pdf\n";
        }
        files.chop(1);
        return files;
    }

    Image image() {
        QImage pixels(640, 400, QImage::Format_RGB32);
        for (int y = 0; y < pixels.height(); ++y) {
            const QRgb colour = QColor::fromHsv(static_cast<int>(below(360)), 120, 220).rgb();
            std::fill_n(reinterpret_cast<QRgb*>(pixels.scanLine(y)), pixels.width(), colour);
        }
        return Image(pixels);
    }

    qint64 below(quint64 limit) { return static_cast<qint64>(m_random() % limit); }

private:
    static constexpr const char* words[] = {
        "the",      "the",    "clipboard", "of",     "https://example.org/path",
        "function", "return", "message",   "const",  "and",
        "report",   "剪贴板", "历史记录",  "会议",   "明天",
        "文件",     "请查收", "2024",      "SELECT", "user",
        "question"};
    std::mt19937_64 m_random;
};

class Insertion {
public:
    explicit Insertion(const QString& directory) {
        const QByteArray file = (directory + QStringLiteral("/Corvatto/corvatto.sqlite3")).toUtf8();
        sqlite3_open(file.constData(), &m_db);
        // The hashes come in no order: their index has to be in memory.
        execute("PRAGMA synchronous = OFF; PRAGMA cache_size = -400000; BEGIN");
        sqlite3_prepare_v2(m_db,
                           "INSERT INTO clipboard_items (content, content_hash, preview, content_type, "
                           "thumbnail_path, source_app, first_copied_at, last_copied_at) "
                           "VALUES (?1, ?2, ?3, ?4, ?5, 'Generator', ?6, ?6)",
                           -1, &m_statement, nullptr);
    }
    ~Insertion() {
        execute("COMMIT; PRAGMA wal_checkpoint(TRUNCATE)");
        sqlite3_finalize(m_statement);
        sqlite3_close(m_db);
    }
    Insertion(const Insertion&) = delete;
    Insertion& operator=(const Insertion&) = delete;

    void insert(const QByteArray& content, const QString& hash, const QByteArray& preview, const char* type,
                const QByteArray& thumbnail, qint64 time) {
        bind(1, content);
        bind(2, hash.toUtf8());
        bind(3, preview);
        bind(4, type);
        bind(5, thumbnail);
        sqlite3_bind_int64(m_statement, 6, time);
        if (sqlite3_step(m_statement) != SQLITE_DONE) {
            fail(sqlite3_errmsg(m_db));
        }
        sqlite3_reset(m_statement);
    }

private:
    void bind(int parameter, const QByteArray& text) {
        const char* bytes = text.isNull() ? nullptr : text.constData(); // null is NULL
        sqlite3_bind_text(m_statement, parameter, bytes, static_cast<int>(text.size()), SQLITE_TRANSIENT);
    }
    void execute(const char* sql) {
        if (sqlite3_exec(m_db, sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
            fail(sqlite3_errmsg(m_db));
        }
    }

    sqlite3* m_db = nullptr;
    sqlite3_stmt* m_statement = nullptr;
};

} // namespace

int main(int argc, char** argv) {
    umask(S_IRWXG | S_IRWXO); // as the program does
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    const Options options = optionsOf(application);
    Generator generator(options.seed);

    NoSettings defaults;
    const Preferences preferences(defaults);
    ClipboardStore store(options.directory, preferences); // makes the tables and the directories
    store.finish();
    if (!store.fetchRecent(std::nullopt, 1).isEmpty()) {
        fail("there is a history already");
    }
    Insertion insertion(options.directory);
    const qint64 now = QDateTime::currentSecsSinceEpoch();
    // Oldest first, as they would have come. Age 0 is the newest.
    for (qint64 age = options.entries - 1; age >= 0; --age) {
        const qint64 time = now - 60 * (age + 1);
        const qint64 number = options.entries - age;
        if (age % 10 == 0 && age / 10 < options.images) {
            const Image image = generator.image();
            const QString hash = sha256(QStringLiteral("image|") + sha256Hex(image.pngData()));
            const auto saved = ImageStorage::saveImage(image, hash, store.imagesDir(), store.thumbnailsDir());
            if (!saved) {
                fail("an image cannot be written");
            }
            insertion.insert(saved->imagePath.toUtf8(), hash, saved->preview.toUtf8(), "image",
                             saved->thumbnailPath.toUtf8(), time);
        } else if (generator.below(20) == 0) {
            const QByteArray files = generator.files(number);
            const QByteArray first = files.left(files.indexOf('\n'));
            insertion.insert(files, sha256Hex("file|" + files), first.mid(first.lastIndexOf('/') + 1), "file",
                             {}, time);
        } else {
            const QByteArray text = generator.text(number, options.textBytes);
            const QString preview = QString::fromUtf8(text.left(480)).left(120).replace(u'\n', u' ');
            insertion.insert(text, sha256Hex(text), preview.toUtf8(), "text", {}, time);
        }
    }
    return EXIT_SUCCESS;
}
