// Matches texts against a pattern of SQL's LIKE, with exactly SQLite's own results but at the speed of
// memory.
//
// SQLite decodes text leniently and compares code points: bytes that are no valid UTF-8 still read as
// something, and equal code points may be spelled differently. So a candidate is found by bytes that each of
// these spellings has, sixteen positions at a time, and only then compared code point by code point.
//
// The leftmost match of a part between two "%" leaves the most text for the parts after it. So each part is
// searched for only once, and matching takes time proportional to the length of the text.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace corvatto {

class LikePattern {
public:
    // "%" stands for any characters, "_" for any single one, and ASCII letters are equal in both cases. A
    // NUL ends the pattern.
    explicit LikePattern(std::string_view pattern);

    // Whether the whole of `text`, up to a NUL if there is one, matches.
    bool matches(std::string_view text) const;

private:
    // Characters that must match consecutively, from between two "%".
    struct Part {
        // Two bytes, at this distance, that occur in each spelling of the first character and of the ASCII
        // characters that follow it. The masks fold the case of letters.
        struct Anchor {
            std::uint8_t first, firstMask, second, secondMask;
            std::size_t distance;
        };
        enum class Search { anyPosition, atAnchor, characterByCharacter };

        std::size_t leadingAny = 0;       // how many "_" come first
        std::vector<char32_t> characters; // folded; what comes after them
        Search search = Search::anyPosition;
        Anchor anchor{};
    };

    using Bytes = const std::uint8_t*;
    static void prepareSearch(Part& part);
    static Bytes matchAt(const Part& part, Bytes position, Bytes end);
    static Bytes find(const Part& part, Bytes begin, Bytes end, bool toEnd);
    static Bytes findAtAnchor(const Part& part, Bytes begin, Bytes end, bool toEnd);

    std::vector<Part> m_parts;
    bool m_isOpenAtStart = false; // starts with "%"
    bool m_isOpenAtEnd = false;
};

} // namespace corvatto
