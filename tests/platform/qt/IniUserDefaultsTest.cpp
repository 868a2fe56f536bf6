#include "platform/qt/IniUserDefaults.h"

#include "support/CapturedOutput.h"
#include "support/Eventually.h"
#include "support/Files.h"
#include "support/Printing.h"
#include "support/WithoutPrivileges.h"

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <utility>

#include <sys/syscall.h>
#include <unistd.h>

namespace {

std::function<void()> duringSync; // called once

} // namespace

// The disk's, and what happens meanwhile.
int fsync(int descriptor) {
    if (const auto meanwhile = std::exchange(duringSync, nullptr)) {
        meanwhile();
    }
    return static_cast<int>(syscall(SYS_fsync, descriptor));
}

namespace corvatto {
namespace {

class IniDefaults : public ::testing::Test {
protected:
    QTemporaryDir home;
    QString directory = home.path() + QStringLiteral("/.config/corvatto");
    QString path = directory + QStringLiteral("/corvatto.ini");
    QString count = QStringLiteral("maxItemCount");
    QString days = QStringLiteral("maxRetentionDays");
    std::optional<IniUserDefaults> defaults;
    int changes = 0;

    void open() {
        defaults.emplace(path);
        QObject::connect(&*defaults, &UserDefaults::didChange, &*defaults, [this] { ++changes; });
    }
    QByteArray onDisk() const { return test::contentOf(path); }
};

TEST_F(IniDefaults, EditsOfTheFileAreNoticedHoweverItIsSaved) {
    open(); // there is no file yet
    test::writeFile(path, "[General]\nmaxItemCount=1\n");
    EXPECT_TRUE(test::eventually([this] { return changes > 0 && defaults->integer(count) == 1; }));
    test::writeFile(path, "maxItemCount=22\n"); // in place, and without a heading
    EXPECT_TRUE(test::eventually([this] { return defaults->integer(count) == 22; }));
    for (const int replaced : {333, 4444}) { // twice, since the file that was watched has gone
        test::writeFile(path + u'~', "maxItemCount=" + QByteArray::number(replaced) + '\n');
        QFile::remove(path);
        ASSERT_TRUE(QFile::rename(path + u'~', path));
        EXPECT_TRUE(test::eventually([&] { return defaults->integer(count) == replaced; }));
    }
}

TEST_F(IniDefaults, OwnWritesAreAnnouncedOnceAndEditsOfTheSameMomentAreNotMissed) {
    open();
    defaults->setInteger(count, 1);
    EXPECT_FALSE(test::eventually([this] { return changes > 1; }, std::chrono::milliseconds(300)));
    for (int i = 2; i < 9; ++i) { // as long as before, and most likely within one tick of the clock
        defaults->setInteger(count, i);
        test::writeFile(path, onDisk().replace("=" + QByteArray::number(i), "=" + QByteArray::number(i + 1)));
        EXPECT_TRUE(test::eventually([&] { return changes == 2 * i - 1; })) << i;
        EXPECT_EQ(defaults->integer(count), i + 1);
    }
}

TEST_F(IniDefaults, AnEditMadeWhileTheDiskIsBusyWithOursIsKept) {
    open();
    defaults->setInteger(count, 1);
    duringSync = [this] {
        test::writeFile(path, "[General]\nmaxRetentionDays=7\n");
    };
    defaults->setInteger(count, 2);
    EXPECT_EQ(defaults->integer(days), 7);
    EXPECT_TRUE(onDisk().contains("maxRetentionDays=7") && onDisk().contains("maxItemCount=2"))
        << onDisk().data();
}

TEST_F(IniDefaults, WhatCannotBeWrittenOrReadCostsOneLine) {
    open();
    defaults->setInteger(count, 1);
    const test::WithoutPrivileges user(
        {home.path(), home.path() + QStringLiteral("/.config"), directory, path});
    ASSERT_TRUE(user.succeeded());
    const auto setWritable = [this](bool isWritable) {
        const auto write = isWritable ? QFile::WriteOwner : QFile::Permissions();
        return QFile::setPermissions(directory, QFile::ReadOwner | QFile::ExeOwner | write) &&
               QFile::setPermissions(path, QFile::ReadOwner | write);
    };
    const QByteArray line = "[UserDefaults] ERROR: Cannot write " + path.toUtf8() + '\n';
    test::CapturedOutput output;
    ASSERT_TRUE(setWritable(false));
    defaults->setInteger(count, 2);
    defaults->setInteger(days, 3);
    EXPECT_EQ(defaults->integer(count), 2);
    EXPECT_EQ(output.text(), line);

    // As soon as it can be, everything is written, and a new failure is worth a new line.
    ASSERT_TRUE(setWritable(true));
    defaults->setInteger(count, 4);
    EXPECT_TRUE(onDisk().contains("maxItemCount=4\nmaxRetentionDays=3\n")) << onDisk().toStdString();
    EXPECT_EQ(output.text(), line);
    ASSERT_TRUE(setWritable(false));
    defaults->setInteger(count, 5);
    EXPECT_EQ(output.text(), line + line);

    ASSERT_TRUE(QFile::setPermissions(path, {}));
    open();
    EXPECT_EQ(defaults->integer(count), 0);
    EXPECT_EQ(output.text(),
              line + line + "[UserDefaults] ERROR: Cannot read " + path.toUtf8() + ", the defaults hold.\n");
}

TEST_F(IniDefaults, AFileThatIsPartlyNonsenseGivesWhatItCanAndNoFileWhatLasts) {
    test::writeFile(path, "[General]\nmaxItemCount=7\n\x01 no setting\n]]\n");
    test::CapturedOutput output;
    open();
    EXPECT_EQ(defaults->integer(count), 7);
    defaults->setInteger(days, 8);
    EXPECT_TRUE(onDisk().contains("maxItemCount=7\nmaxRetentionDays=8\n")) << onDisk().toStdString();
    QByteArray lines =
        "[UserDefaults] ERROR: Some lines of " + path.toUtf8() + " are no settings and are ignored.\n";
    EXPECT_EQ(output.text(), lines) << "it could be written";

    path.clear();
    open();
    defaults->setInteger(count, 5);
    EXPECT_EQ(defaults->integer(count), 5);
    lines += "[UserDefaults] ERROR: There is no home directory, settings are not kept.\n";
    EXPECT_EQ(output.text(), lines);
}

TEST_F(IniDefaults, AWriteKeepsEveryOtherLineOfTheFile) {
    for (const auto& [before, after] : std::initializer_list<std::pair<QByteArray, QByteArray>>{
             {"", "[General]\nmaxItemCount=5\n"},
             {"; mine\r\n[General]\r\nmaxItemCount = 4 \r\n", "; mine\r\n[General]\r\nmaxItemCount=5\r\n"},
             {"# a=b\n[Other]\nmaxItemCount=1\n\n[General]\n# days\nmaxRetentionDays=2\n\n[More]\nx=\xFF",
              "# a=b\n[Other]\nmaxItemCount=1\n\n[General]\n# days\nmaxRetentionDays=2\nmaxItemCount=5\n"
              "\n[More]\nx=\xFF\n"},
             {"maxItemCount=3\nmaxItemCount=4\n[Other]", "maxItemCount=3\nmaxItemCount=5\n[Other]"},
             {"[Other]\nmaxItemCount=1", "[Other]\nmaxItemCount=1\n[General]\nmaxItemCount=5\n"}}) {
        test::writeFile(path, before);
        open();
        defaults->setInteger(count, 5);
        EXPECT_EQ(onDisk().toStdString(), after.toStdString());
    }
}

TEST_F(IniDefaults, TextsAreReadAsQSettingsWroteThemAndTheOtherWayRound) {
    const QString key = QStringLiteral("corvattoIgnoredUpdateVersion");
    for (const QString& text : {QStringLiteral("1.4.0"), QStringLiteral("1, 2; \"3\" = [4] \\ #5 "),
                                QStringLiteral("@Size(1 2)"), QStringLiteral("版本\U0001F4CE\u00e9"),
                                QStringLiteral("\x1f"
                                               "a\n\t\x7f")}) {
        QFile::remove(path);
        { QSettings(path, QSettings::IniFormat).setValue(key, text); }
        open();
        EXPECT_EQ(defaults->string(key), text) << onDisk().toStdString();
        QFile::remove(path);
        defaults->setObject(key, text);
        EXPECT_EQ(QSettings(path, QSettings::IniFormat).value(key), text) << onDisk().toStdString();
    }
}

TEST_F(IniDefaults, ValuesOfAnyKindReadAsNumbersOrDefaults) {
    struct Case {
        QByteArray content;
        qint64 integer;
        double number;
    };
    constexpr qint64 most = std::numeric_limits<qint64>::max();
    QByteArray noise;
    for (unsigned byte = 0; byte < 5000; ++byte) {
        noise += static_cast<char>(byte * byte * 31 / 7);
    }
    const test::CapturedOutput output;
    for (const Case& each : std::initializer_list<Case>{
             {"", 9, 9}, // what is absent is the registered 9
             {"[General]\nmaxItemCou", 9, 9},
             {noise, 9, 9},
             {"[Other]\nmaxItemCount=5", 9, 9},
             {"maxItemCount=", 0, 0}, // what is no number is 0
             {"maxItemCount=0x10", 0, 0},
             {"maxItemCount=\"5", 5, 5},
             {"maxItemCount=@ByteArray(5)", 0, 0},
             {"maxItemCount=nan", 0, 0},
             {"maxItemCount=1e999", 0, 0},
             {"maxItemCount=-7", -7, -7},
             {"maxItemCount=-2.75", -2, -2.75}, // toward zero
             {"maxItemCount=9223372036854775807", most, 0x1p63},
             {"maxItemCount=9223372036854775808", 0, 0x1p63},
             {"maxItemCount=-1e300", 0, -1e300},
         }) {
        SCOPED_TRACE(each.content.left(50).toStdString());
        test::writeFile(path, each.content);
        open();
        defaults->registerDefaults({{count, 9}});
        EXPECT_EQ(defaults->integer(count), each.integer);
        EXPECT_EQ(defaults->number(count), each.number);
    }
}

} // namespace
} // namespace corvatto
