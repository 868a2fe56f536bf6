#include "platform/freedesktop/DesktopEntries.h"

#include "support/Files.h"
#include "support/Printing.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <filesystem>

namespace corvatto {
namespace {

class Entries : public ::testing::Test {
protected:
    QTemporaryDir home;
    QString user = home.path() + QStringLiteral("/user");
    QString system = home.path() + QStringLiteral("/system");

    static void write(const QString& directory, const char* name, const char* content) {
        test::writeFile(directory + u'/' + QString::fromUtf8(name), content);
    }
    static QString nameIn(DesktopEntries& entries, const char* windowClass) {
        return entries.nameForWindowClass(QString::fromUtf8(windowClass)).value_or(QStringLiteral("(none)"));
    }
    QString name(const char* windowClass, const char* languages = "") const {
        DesktopEntries entries({user, system}, QString::fromUtf8(languages).split(u' '));
        return nameIn(entries, windowClass);
    }
};

TEST_F(Entries, TheNameIsTheOneOfTheFirstLanguageThatHasOne) {
    write(system, "editor.desktop",
          "# Name=comment\n[Desktop Entry]\nName[zh]=编辑\nName = Editor \nName[zh_CN]=编辑器\n"
          "Name[de]=Bearbeiter\nGenericName=Text\n[Desktop Action new]\nName=New Window\nName[fr]=Neuf\n");
    EXPECT_EQ(name("editor", "zh_CN zh"), u"编辑器");
    EXPECT_EQ(name("editor", "zh_TW zh zh_CN"), u"编辑");
    EXPECT_EQ(name("editor", "fr"), u"Editor") << "an action's name is not the application's";
}

TEST_F(Entries, EntriesAreFoundByFileNameBeforeDeclaredClassAndTheUsersFirst) {
    write(system, "firefox.desktop", "[Desktop Entry]\nName=System\n");
    EXPECT_EQ(name("Firefox"), u"System") << "in lower case";
    write(user, "firefox.desktop", "[Desktop Entry]\nName=User\nStartupWMClass=Navigator\n");
    EXPECT_EQ(name("Firefox"), u"User");
    write(system, "kde/org.office.desktop", "[Desktop Entry]\nStartupWMClass=LibreOffice\nName=Office\n");
    EXPECT_EQ(name("libreoffice"), u"Office");
    EXPECT_EQ(name("navigator"), u"User");
    write(system, "navigator.desktop", "[Desktop Entry]\nName=By file\n");
    EXPECT_EQ(name("navigator"), u"By file");
    EXPECT_EQ(name("nobody"), u"(none)");
}

TEST_F(Entries, WhatIsInstalledLaterIsFoundWhenItsDirectoryHasChanged) {
    namespace fs = std::filesystem;
    write(system, "kde/other.desktop", "[Desktop Entry]\nName=Other\n");
    const fs::path folder = system.toStdString(), subfolder = folder / "kde";
    const auto before = fs::file_time_type::clock::now() - std::chrono::hours(1);
    fs::last_write_time(folder, before);
    fs::last_write_time(subfolder, before);
    DesktopEntries entries({user, system}, {});
    EXPECT_EQ(nameIn(entries, "Player"), u"(none)");
    write(system, "kde/player.desktop", "[Desktop Entry]\nName=Songs\nStartupWMClass=Player\n");
    fs::last_write_time(subfolder, before);
    EXPECT_EQ(nameIn(entries, "Player"), u"(none)") << "no file is looked at while no directory changes";
    fs::last_write_time(subfolder, before + std::chrono::minutes(1));
    EXPECT_EQ(nameIn(entries, "Player"), u"Songs");
    write(user, "player.desktop", "[Desktop Entry]\nName=Mine\n"); // with the directory, which was missing
    EXPECT_EQ(nameIn(entries, "Player"), u"Mine");
}

TEST_F(Entries, WhatAWindowSaysOfItselfLeadsNowhereElse) {
    write(home.path() + QStringLiteral("/elsewhere"), "x.desktop", "[Desktop Entry]\nName=Secret\n");
    write(home.path(), ".desktop", "[Desktop Entry]\nName=Nameless\nStartupWMClass=\n");
    write(system, "nameless.desktop", "[Desktop Entry]\nStartupWMClass=other\nIcon=x\n");
    for (const char* hostile : {"../elsewhere/x", "/etc/x", "", "..", "nameless", "other"}) {
        EXPECT_EQ(name(hostile), u"(none)") << hostile;
    }
}

} // namespace
} // namespace corvatto
