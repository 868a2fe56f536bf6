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
    explicit Connection(const char* sql = "SELECT ?1 LIKE ?2") {
        sqlite3_open(":memory:", &m_db);
        sqlite3_prepare_v2(m_db, sql, -1, &m_statement, nullptr);
    }
    ~Connection() {
        sqlite3_finalize(m_statement);
        sqlite3_close(m_db);
    }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    sqlite3* db() const { return m_db; }
    void bind(int parameter, const std::string& text) const {
        sqlite3_bind_text64(m_statement, parameter, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8);
    }

    // The result, its type or the error.
    std::string answer() const {
        const int status = sqlite3_step(m_statement);
        const std::string result = status != SQLITE_ROW ? sqlite3_errmsg(m_db)
                                   : sqlite3_column_type(m_statement, 0) == SQLITE_NULL
                                       ? "NULL"
                                       : reinterpret_cast<const char*>(sqlite3_column_text(m_statement, 0));
        sqlite3_reset(m_statement);
        return result;
    }

private:
    sqlite3* m_db = nullptr;
    sqlite3_stmt* m_statement = nullptr;
};

class LikeFunctionTest : public ::testing::Test {
protected:
    LikeFunctionTest() { installLikeFunction(fast.db()); }

    Connection fast, builtIn;

    // Whether it matches, after comparing with SQLite's own answer.
    bool like(const std::string& text, const std::string& pattern) {
        for (const Connection* connection : {&fast, &builtIn}) {
            connection->bind(1, text);
            connection->bind(2, pattern);
        }
        const std::string expected = builtIn.answer();
        const auto bytes = [](const std::string& string) {
            return ::testing::PrintToString(std::vector<int>(string.begin(), string.end()));
        };
        EXPECT_EQ(fast.answer(), expected) << bytes(text) << " LIKE " << bytes(pattern);
        return expected == "1";
    }
};

} // namespace

TEST_F(LikeFunctionTest, AgreesOnRandomTextsWhetherValidOrNot) {
    // Pieces that meet each other: both cases, wildcards, one character spelled in several ways, stray and
    // surplus continuation bytes, bytes that no text has, NUL.
    std::istringstream spaced(
        "a A b B @ ` [ { % _ ab \u4E2D \u6587 \u00E9 \u00C9 \U0001F600 \xF0\x84\xB8\xAD \xE0\x83\xA9 \xA9 "
        "\x80 "
        "\xB8\xAD \xAD \xC3 \xE4 \xE4\xB8 \xC1\x81 \xFE \xFF \xF9\x80\x80\x80\x80 \xFD\x80\x80\x80\x80 "
        "\xF8\x80\x84\xB8\xAD \xED\xA0\x80 \xEF\xBF\xBD \xEF\xBF\xBE");
    std::vector<std::string> pieces(std::istream_iterator<std::string>(spaced), {});
    pieces.emplace_back(1, '\0');
    std::mt19937 random(20);
    const auto below = [&](std::size_t bound) {
        return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random);
    };
    int matches = 0;
    for (int round = 0; round < 300'000 && !HasFailure(); ++round) {
        // Few different pieces at a time, so that much almost matches; sometimes longer than a search block.
        const std::vector<std::string> some{pieces[below(pieces.size())], pieces[below(pieces.size())],
                                            pieces[below(pieces.size())]};
        const auto mixed = [&](std::size_t count) {
            std::string text;
            for (; count > 0; --count) {
                text += some[below(some.size())];
            }
            return text;
        };
        std::string pattern = mixed(below(4));
        const std::string open = below(3) == 0 ? "" : "%";
        pattern = open + pattern + (below(3) == 0 ? "%" + mixed(below(3)) : "") + open;
        matches += like(mixed(below(round % 8 == 0 ? 60 : 8)), pattern) ? 1 : 0;
    }
    EXPECT_GT(matches, 50'000);
}

TEST_F(LikeFunctionTest, AgreesOnEveryTypeOfValueAndOnTooLongAPattern) {
    const char* values[] = {"NULL", "12", "1.5", "x'6162'", "'12'",
                            "'ab'", "''", "'%'", "x'25'",   "printf('%.*c', 60000, 'x')"};
    for (const char* text : values) {
        for (const char* pattern : values) {
            const std::string sql = std::string("SELECT ") + text + " LIKE " + pattern;
            const Connection replaced(sql.c_str()), own(sql.c_str());
            installLikeFunction(replaced.db());
            EXPECT_EQ(replaced.answer(), own.answer()) << sql;
        }
    }
}

TEST_F(LikeFunctionTest, TakesTimeProportionalToTheTextWhateverThePattern) {
    // Each of these takes a matcher that starts over, or that walks back, minutes.
    const std::string text(4'000'000, 'a'), strays(4'000'000, '\x80');
    const std::string chain = "%a%a%a%a%a%a%a%a%a%a%a%a%b%";
    for (const auto& [subject, pattern] : {std::pair{text, chain},
                                           {strays, "%\xE4\x80\x80%"},
                                           {"\xE4" + strays, "%\xE4\x80\x80%"},
                                           {strays, "%\xC2\x80x%"}}) {
        fast.bind(1, subject);
        fast.bind(2, pattern);
        EXPECT_EQ(fast.answer(), "0");
    }
}

} // namespace corvatto::test
