// The replaced `like` function beside SQLite's own: whatever the text and the pattern, the answers are equal.
#include "LikeFunction.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace corvatto::test {
namespace {

class Connection {
public:
    explicit Connection(bool isReplaced, const std::string& sql = "SELECT ?1 LIKE ?2") {
        sqlite3_open(":memory:", &m_db);
        if (isReplaced) {
            installLikeFunction(m_db);
        }
        sqlite3_prepare_v2(m_db, sql.c_str(), -1, &m_statement, nullptr);
    }
    ~Connection() {
        sqlite3_finalize(m_statement);
        sqlite3_close(m_db);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // The result, its type or the error.
    std::string answer() const {
        const int status = sqlite3_step(m_statement);
        const auto* value = reinterpret_cast<const char*>(sqlite3_column_text(m_statement, 0));
        const std::string result = status != SQLITE_ROW ? sqlite3_errmsg(m_db)
                                   : value == nullptr   ? "NULL"
                                                        : value;
        sqlite3_reset(m_statement);
        return result;
    }
    std::string like(const std::string& text, const std::string& pattern) const {
        sqlite3_bind_text64(m_statement, 1, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8);
        sqlite3_bind_text64(m_statement, 2, pattern.data(), pattern.size(), SQLITE_STATIC, SQLITE_UTF8);
        return answer();
    }

private:
    sqlite3* m_db = nullptr;
    sqlite3_stmt* m_statement = nullptr;
};

const Connection& replaced() {
    static const Connection connection(true);
    return connection;
}

} // namespace

TEST(LikeFunction, AgreesOnRandomTextsWhetherValidOrNot) {
    // Pieces that meet each other: both cases, wildcards, one character spelled in several ways, stray and
    // surplus continuation bytes, bytes that no text has, NUL.
    std::istringstream spaced(
        "a A b B @ ` [ { % _ ab \u4E2D \u6587 \u00E9 \u00C9 \U0001F600 \xF0\x84\xB8\xAD \xE0\x83\xA9 \xA9 "
        "\x80 \xB8\xAD \xAD \xC3 \xE4 \xE4\xB8 \xC1\x81 \xFE \xFF \xF9\x80\x80\x80\x80 \xFD\x80\x80\x80\x80 "
        "\xF8\x80\x84\xB8\xAD \xED\xA0\x80 \xEF\xBF\xBD \xEF\xBF\xBE");
    std::vector<std::string> pieces(std::istream_iterator<std::string>(spaced), {});
    pieces.emplace_back(1, '\0');
    std::mt19937 random(20);
    const auto oneOf = [&](const std::vector<std::string>& all) {
        return all[random() % all.size()];
    };
    const Connection builtIn(false);
    int matches = 0;
    for (int round = 0; round < 300'000 && !::testing::Test::HasFailure(); ++round) {
        // Few different pieces at a time, so that much almost matches; sometimes longer than a search block.
        const std::vector<std::string> some{oneOf(pieces), oneOf(pieces), oneOf(pieces)};
        const auto mixed = [&](std::size_t limit) {
            std::string text;
            for (std::size_t count = random() % limit; count > 0; --count) {
                text += oneOf(some);
            }
            return text;
        };
        std::string pattern = mixed(4);
        const std::string open = random() % 3 == 0 ? "" : "%";
        pattern = open + pattern + (random() % 3 == 0 ? "%" + mixed(3) : "") + open;
        const std::string text = mixed(round % 8 == 0 ? 60 : 8);
        const std::string expected = builtIn.like(text, pattern);
        EXPECT_EQ(replaced().like(text, pattern), expected)
            << ::testing::PrintToString(std::vector<int>(text.begin(), text.end())) << " LIKE "
            << ::testing::PrintToString(std::vector<int>(pattern.begin(), pattern.end()));
        matches += expected == "1" ? 1 : 0;
    }
    EXPECT_GT(matches, 50'000);
}

TEST(LikeFunction, AgreesOnEveryTypeOfValueAndOnTooLongAPattern) {
    const std::string values[] = {"NULL", "12", "1.5", "x'6162'", "'12'",
                                  "'ab'", "''", "'%'", "x'25'",   "printf('%.*c', 60000, 'x')"};
    for (const std::string& text : values) {
        for (const std::string& pattern : values) {
            const std::string sql = "SELECT " + text + " LIKE " + pattern;
            EXPECT_EQ(Connection(true, sql).answer(), Connection(false, sql).answer()) << sql;
        }
    }
}

TEST(LikeFunction, TakesTimeProportionalToTheTextWhateverThePattern) {
    // Each of these takes a matcher that starts over, or that walks back, minutes.
    const std::string text(4'000'000, 'a'), strays(4'000'000, '\x80');
    EXPECT_EQ(replaced().like(text, "%a%a%a%a%a%a%a%a%a%a%a%a%b%"), "0");
    EXPECT_EQ(replaced().like(strays, "%\xE4\x80\x80%"), "0");
    EXPECT_EQ(replaced().like("\xE4" + strays, "%\xE4\x80\x80%"), "0");
    EXPECT_EQ(replaced().like(strays, "%\xC2\x80x%"), "0");
}

} // namespace corvatto::test
