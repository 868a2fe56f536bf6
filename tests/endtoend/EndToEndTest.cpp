#include "EndToEndTest.h"

#include <QBuffer>
#include <QFile>
#include <QSettings>
#include <QUrl>

#include <cstdio>
#include <numeric>
#include <stdexcept>

namespace corvatto::test {

EndToEndTest::EndToEndTest(std::unique_ptr<TestDesktop> newDesktop)
    : m_desktop(std::move(newDesktop)), desktop(*m_desktop), textTarget(desktop.textTarget()),
      database(desktop.dataDirectory() + "/corvatto.sqlite3") {
    setSetting("clipboardPollingInterval", 0.1); // seconds
}

void EndToEndTest::TearDown() {
    ASSERT_TRUE(program);
    EXPECT_TRUE(program->isRunning());
    if (HasFailure()) {
        keepPicture();
    }
    EXPECT_EQ(program->stop(), 0);
    EXPECT_EQ(program->errors(), ""); // it writes to standard output
}

void EndToEndTest::keepPicture() {
    const auto& test = *::testing::UnitTest::GetInstance()->current_test_info();
    const QByteArray name = QByteArray(test.test_suite_name()) + '.' + test.name();
    const QString path =
        QStringLiteral(SCREENSHOT_DIRECTORY "/%1.png").arg(QString::fromUtf8(name).replace(u'/', u'-'));
    desktop.screenshot().save(path);
    const auto end = [](const std::unique_ptr<Process>& process) {
        return process ? process->output().right(500) : QByteArray();
    };
    std::printf("The screen: %s\nThe program has printed:\n%s\nThe owner of the clipboard:\n%s\n",
                qPrintable(path), end(program).constData(), end(owner).constData());
}

void EndToEndTest::setSetting(const char* key, const QVariant& value) {
    QSettings settings(QString::fromUtf8(desktop.settingsFile()), QSettings::IniFormat);
    settings.setValue(QLatin1String(key), value);
}

QVariant EndToEndTest::setting(const char* key) {
    // From a copy: of a file that it knows, Qt misses a change that keeps the size and the tick of the clock.
    QTemporaryFile copy;
    copy.open();
    copy.write(bytesOf(desktop.settingsFile()));
    copy.close();
    return QSettings(copy.fileName(), QSettings::IniFormat).value(QLatin1String(key));
}

void EndToEndTest::start() {
    program = std::make_unique<Process>(CORVATTO_PROGRAM, QByteArrayList(), desktop.environment());
}

void EndToEndTest::launch() {
    start();
    if (!soon([this] { return panelHasKeyboard() || !program->isRunning(); }) || !program->isRunning()) {
        throw std::runtime_error("the panel does not come up");
    }
}

void EndToEndTest::showPanel() {
    desktop.key("super+shift+v");
    if (!soon([this] { return panelHasKeyboard(); })) {
        throw std::runtime_error("the shortcut does not show the panel");
    }
}

void EndToEndTest::hidePanel() {
    desktop.key("Escape");
    if (!soonHidden()) {
        throw std::runtime_error("Escape does not hide the panel");
    }
}

std::optional<int> EndToEndTest::corvatto(const QByteArrayList& arguments) {
    return Process(CORVATTO_PROGRAM, arguments, desktop.environment(), true).exitStatus();
}

bool EndToEndTest::soonHidden() {
    return soon([this] { return panelRect().isEmpty(); });
}

bool EndToEndTest::soonToggled(const QByteArray& keys) {
    return soon([&, wasHidden = panelRect().isEmpty()] {
        desktop.key(keys);
        return soon([&] { return panelRect().isEmpty() != wasHidden; }, std::chrono::seconds(2));
    });
}

QPoint EndToEndTest::card(int index) {
    const QRect rect = panelRect();
    return {rect.x() + 28 + index * (320 + 18) + 160, rect.y() + rect.height() - 28 - 1 - 18 - 160};
}

Process& EndToEndTest::copy(const QList<Offer>& offers, const QByteArrayList& options) {
    QByteArrayList arguments = options;
    for (const Offer& offer : offers) {
        const QByteArray file = desktop.writeFile("copied/" + QByteArray::number(++m_copies), offer.bytes);
        arguments.append(offer.target + '=' + file);
    }
    // The one before ends when it has lost the clipboard.
    const auto previous =
        std::exchange(owner, std::make_unique<Process>(CLIPBOARD_CLIENT, arguments, desktop.environment()));
    if (!soon([this] { return owner->output().contains("owner\n"); })) {
        throw std::runtime_error("nobody takes the clipboard");
    }
    return *owner;
}

Database::Row EndToEndTest::record(const QByteArray& text) {
    copyText(text);
    if (!soonStored(text)) {
        throw std::runtime_error("not recorded: " + text.toStdString());
    }
    return *database.find(text);
}

bool EndToEndTest::soonStored(const QByteArray& content, qint64 copyCount) {
    return soon([&] {
        const auto row = database.find(content);
        return row && row->copyCount == copyCount;
    });
}

bool EndToEndTest::soonPrinted(const QByteArray& line) {
    return soon([&] { return program->hasPrinted(line); });
}

QList<Database::Row> EndToEndTest::rowsAfterNextCopy() {
    const auto copies = [this] {
        const auto rows = database.rows();
        return std::accumulate(rows.begin(), rows.end(), qint64{0},
                               [](qint64 sum, const auto& row) { return sum + row.copyCount; });
    };
    soon([&, before = copies()] { return copies() != before; }, std::chrono::milliseconds(400));
    const QByteArray next = "the next good copy " + QByteArray::number(++m_copies);
    record(next);
    auto rows = database.rows();
    rows.removeIf([&](const Database::Row& row) { return row.content == next; });
    return rows;
}

namespace {

std::unique_ptr<TestDesktop> newDesktop(DesktopKind kind, const TestDesktop::Options& options) {
    switch (kind) {
    case DesktopKind::X11:
        return std::make_unique<X11Desktop>(options);
    case DesktopKind::Sway:
        return std::make_unique<SwayDesktop>(options);
    case DesktopKind::KWin:
        return std::make_unique<KWinDesktop>(options);
    }
    return nullptr;
}

} // namespace

void X11Test::run(const QByteArray& command) {
    auto words = command.split(' ');
    Process process(words.takeFirst(), words, desktop.environment());
    ASSERT_EQ(process.exitStatus(), 0) << command.constData();
}

DesktopTest::DesktopTest(const TestDesktop::Options& options)
    : EndToEndTest(newDesktop(GetParam(), options)) {}

QByteArray nameOf(DesktopKind kind) {
    return kind == DesktopKind::X11 ? "X11" : kind == DesktopKind::Sway ? "Sway" : "KWin";
}

QByteArrayList numberedEntries() {
    QByteArrayList entries;
    for (int i = 0; i < 17; ++i) {
        entries.append("entry " + QByteArray::number(i));
    }
    return entries;
}

QImage testImage(QSize size) {
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const int mixed = (x * 7919) ^ (y * 104729);
            image.setPixel(x, y, qRgb(x * 255 / size.width(), y * 255 / size.height(), mixed & 0xff));
        }
    }
    return image;
}

QByteArray encoded(const QImage& image, const char* format) {
    QBuffer buffer;
    image.save(&buffer, format);
    return buffer.data();
}

QImage decoded(const QByteArray& bytes) {
    return QImage::fromData(bytes).convertToFormat(QImage::Format_RGB32);
}

QByteArray bytesOf(const QByteArray& path) {
    QFile file(QString::fromUtf8(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray fileUrl(const QByteArray& path) {
    return QUrl::fromLocalFile(QString::fromUtf8(path)).toEncoded();
}

} // namespace corvatto::test
