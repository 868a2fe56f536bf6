#include "platform/qt/IniUserDefaults.h"

#include "support/CapturedOutput.h"
#include "support/Eventually.h"
#include "support/Printing.h"
#include "support/WithoutPrivileges.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <limits>

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
    QByteArray onDisk() const {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(cannot be read)");
    }
    void edit(const QByteArray& content, const QString& name) const {
        QFile file(name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    }
    bool chmod(const QString& name, QFile::Permissions permissions) const {
        return QFile::setPermissions(name, permissions);
    }
};

TEST_F(IniDefaults, AWriteIsOnDiskAtOnceAndRegisteredDefaultsNeverAre) {
    test::CapturedOutput output;
    open();
    const QString version = QStringLiteral("version");
    defaults->registerDefaults({{days, 7}});
    defaults->setInteger(count, 50);
    defaults->setObject(version, QStringLiteral("1.0, 中文\"; #"));
    EXPECT_TRUE(onDisk().contains("maxItemCount=50\n")) << onDisk().toStdString();
    EXPECT_FALSE(onDisk().contains("maxRetentionDays"));
    EXPECT_EQ(changes, 2);

    open(); // the next run
    EXPECT_EQ(defaults->integer(count), 50);
    EXPECT_EQ(defaults->string(version), QStringLiteral("1.0, 中文\"; #"));
    EXPECT_EQ(defaults->integer(days), 0);
    EXPECT_EQ(output.text(), "");
}

TEST_F(IniDefaults, EditsOfTheFileAreNoticedHoweverItIsSaved) {
    open(); // there is no file yet
    edit("[General]\nmaxItemCount=1\n", path);
    EXPECT_TRUE(test::eventually([this] { return changes > 0 && defaults->integer(count) == 1; }));
    edit("maxItemCount=22\n", path); // in place, and without a heading
    EXPECT_TRUE(test::eventually([this] { return defaults->integer(count) == 22; }));
    for (const char* content : {"maxItemCount=333\n", "maxItemCount=4444\n"}) {
        edit(content, path + u'~');
        QFile::remove(path);
        ASSERT_TRUE(QFile::rename(path + u'~', path));
        EXPECT_TRUE(test::eventually(
            [&] { return content == "maxItemCount=" + defaults->string(count)->toUtf8() + '\n'; }));
    }
    changes = 0;
    edit("maxItemCount=five\n", path);
    EXPECT_TRUE(test::eventually([this] { return changes > 0 && defaults->integer(count) == 0; }));
}

TEST_F(IniDefaults, WhatCannotBeWrittenHoldsForTheRunAndCostsOneLine) {
    open();
    defaults->setInteger(count, 1);
    const test::WithoutPrivileges user(
        {home.path(), home.path() + QStringLiteral("/.config"), directory, path});
    ASSERT_TRUE(user.succeeded());
    const QByteArray line = "[UserDefaults] ERROR: Cannot write " + path.toUtf8() + '\n';
    test::CapturedOutput output;
    ASSERT_TRUE(chmod(path, QFile::ReadOwner) && chmod(directory, QFile::ReadOwner | QFile::ExeOwner));
    defaults->setInteger(count, 2);
    defaults->setInteger(days, 3);
    EXPECT_EQ(defaults->integer(count), 2);
    EXPECT_EQ(defaults->integer(days), 3);
    EXPECT_EQ(output.text(), line);

    // As soon as it can be, everything is written, and a new failure is worth a new line.
    ASSERT_TRUE(chmod(directory, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner) &&
                chmod(path, QFile::ReadOwner | QFile::WriteOwner));
    defaults->setInteger(count, 4);
    EXPECT_TRUE(onDisk().contains("maxItemCount=4\nmaxRetentionDays=3\n")) << onDisk().toStdString();
    EXPECT_EQ(output.text(), line);
    ASSERT_TRUE(chmod(path, QFile::ReadOwner) && chmod(directory, QFile::ReadOwner | QFile::ExeOwner));
    defaults->setInteger(count, 5);
    EXPECT_EQ(output.text(), line + line);
}

TEST_F(IniDefaults, AFileThatIsPartlyNonsenseGivesWhatItCan) {
    open();
    edit("[General]\nmaxItemCount=7\n\x01 no setting\n]]\n", path);
    test::CapturedOutput output;
    open();
    const QByteArray line =
        "[UserDefaults] ERROR: Some lines of " + path.toUtf8() + " are no settings and are ignored.\n";
    EXPECT_EQ(output.text(), line);
    EXPECT_EQ(defaults->integer(count), 7);
    defaults->setInteger(days, 8);
    EXPECT_EQ(output.text(), line) << "it could be written";
    EXPECT_TRUE(onDisk().contains("maxItemCount=7\nmaxRetentionDays=8\n")) << onDisk().toStdString();
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
    open();
    for (const Case& each : std::initializer_list<Case>{
             {"", 9, 9}, // what is absent is the registered 9
             {"[General]\nmaxItemCou", 9, 9},
             {"[General", 9, 9},
             {noise, 9, 9},
             {"[Other]\nmaxItemCount=5", 9, 9},
             {"maxItemCount=@Invalid()", 9, 9},
             {"maxItemCount=", 0, 0}, // what is no number is 0
             {"maxItemCount=many", 0, 0},
             {"maxItemCount=1, 2", 0, 0},
             {"maxItemCount=\"5", 5, 5},
             {"maxItemCount=@ByteArray(5)", 0, 0},
             {"maxItemCount=@Size(5 5)", 0, 0},
             {"maxItemCount=@Variant(\\0\\0\\0\\x7f\\xff\\xff\\xff\\xff)", 9, 9}, // says nothing
             {"maxItemCount=nan", 0, 0},
             {"maxItemCount=-inf", 0, 0},
             {"maxItemCount=1e999", 0, 0},
             {"maxItemCount=-7", -7, -7},
             {"maxItemCount=4294967297", 4294967297, 4294967297},
             {"maxItemCount=9223372036854775807", most, 0x1p63},
             {"maxItemCount=9223372036854775808", 0, 0x1p63},
             {"maxItemCount=-1e300", 0, -1e300},
         }) {
        SCOPED_TRACE(each.content.left(50).toStdString());
        ASSERT_TRUE(QDir().mkpath(directory));
        edit(each.content, path);
        open();
        defaults->registerDefaults({{count, 9}});
        EXPECT_EQ(defaults->integer(count), each.integer);
        EXPECT_EQ(defaults->number(count), each.number);
    }
}

TEST_F(IniDefaults, WithoutAHomeSettingsLastForTheRun) {
    const test::WithoutPrivileges user({});
    test::CapturedOutput output;
    path.clear();
    open();
    defaults->setInteger(count, 5);
    EXPECT_EQ(defaults->integer(count), 5);
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(output.text(), "[UserDefaults] ERROR: There is no home directory, settings are not kept.\n");
}

TEST_F(IniDefaults, AFileThatMayNotBeReadIsOneLineAndTheDefaultsHold) {
    ASSERT_TRUE(QDir().mkpath(directory));
    edit("maxItemCount=1\n", path);
    const test::WithoutPrivileges user(
        {home.path(), home.path() + QStringLiteral("/.config"), directory, path});
    ASSERT_TRUE(user.succeeded() && chmod(path, {}));
    test::CapturedOutput output;
    open();
    defaults->registerDefaults({{count, 9}});
    EXPECT_EQ(defaults->integer(count), 9);
    EXPECT_EQ(output.text(), "[UserDefaults] ERROR: Cannot read " + path.toUtf8() + ", the defaults hold.\n");
}

} // namespace
} // namespace corvatto
