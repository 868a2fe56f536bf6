#include "update/UpdateInfo.h"
#include "update/VersionComparison.h"

#include "support/Printing.h"

#include <QStringList>

#include <gtest/gtest.h>

namespace corvatto {
namespace {

// "REMOTE against LOCAL".
bool isNewer(const char* pair) {
    const QStringList versions = QString::fromUtf8(pair).split(QStringLiteral(" against "));
    return isRemoteVersion(versions.at(0), versions.at(1));
}

TEST(Versions, AreComparedNumberByNumber) {
    // What is no number counts as 0; one sign belongs to a number, which has 64 bits.
    for (const char* pair :
         {"1.10 against 1.9", "1.2.1 against 1.2", "2 against 1.9.9", "1.2.0 against 0.0.0",
          "1.3-beta against 0.9", "1.rc1.1 against 1.0.0", "1 against ", "1..1 against 1.0.0",
          ".1 against 0.0.9", "+2 against 1", "1 against 1.-1", "0 against -9223372036854775808",
          "9223372036854775807 against 9223372036854775806"}) {
        EXPECT_TRUE(isNewer(pair)) << pair;
    }
    for (const char* pair : {"1.2 against 1.2.0", "1.2 against 1.2.1", "1.9.9 against 2",
                             "1.3-beta against 1.2", "1.3-beta against 1.0", " against 0", "1. 2 against 1.0",
                             "1.\u0662 against 1.0", "0x10 against 0", "+2 against 2", "1.-1 against 1",
                             "1.+ against 1", "1.--2 against 1", "9223372036854775808 against 1"}) {
        EXPECT_FALSE(isNewer(pair)) << pair;
    }
}

TEST(UpdateDocument, NeedsItsThreeTexts) {
    const auto info =
        UpdateInfo::decode(R"({"update_log":"一\n二","x":[1],"download_url":"","latest_version":"1.4.0"})");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->latestVersion, u"1.4.0");
    EXPECT_EQ(info->updateLog, u"一\n二");
    EXPECT_EQ(info->downloadURL, u"");

    for (const char* bad :
         {"", "null", "<html>", "[]", R"(["latest_version"])", R"("1.4.0")",
          R"({"update_log":"","download_url":""})", R"({"latest_version":"","download_url":""})",
          R"({"latest_version":"","update_log":""})",
          R"({"latest_version":1.4,"update_log":"","download_url":""})",
          R"({"latest_version":"","update_log":null,"download_url":""})",
          R"({"latest_version":"","update_log":"","download_url":[""]})",
          R"({"Latest_version":"","update_log":"","download_url":""})",
          R"({"latest_version":"","update_log":"","download_url":""} x)",
          R"({"latest_version":"","update_log":"","download_url":"")",
          "{\"latest_version\":\"\xff\",\"update_log\":\"\",\"download_url\":\"\"}"}) {
        EXPECT_FALSE(UpdateInfo::decode(bad)) << bad;
    }
}

} // namespace
} // namespace corvatto
