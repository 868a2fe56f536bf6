#include "LikePattern.h"

#include <algorithm>
#include <cstring>

namespace corvatto {
namespace {

using Bytes = const std::uint8_t*;

constexpr char32_t anyCharacter = 0; // a text ends at its first NUL, so that no character has this value
constexpr char32_t replacement = 0xFFFD;

constexpr bool isContinuation(std::uint8_t byte) {
    return (byte & 0xC0) == 0x80;
}

constexpr bool isLead(std::uint8_t byte) {
    return byte >= 0xC0;
}

constexpr bool isLetter(char32_t character) {
    return character >= U'a' && character <= U'z';
}

constexpr char32_t fold(char32_t character) {
    return character >= U'A' && character <= U'Z' ? character + (U'a' - U'A') : character;
}

// The bits that a lead byte contributes: those that do not encode the length, also in lead bytes that occur
// in no valid text.
constexpr char32_t leadBits(std::uint8_t byte) {
    if (byte < 0xE0) {
        return byte & 0x1Fu;
    }
    if (byte < 0xF0) {
        return byte & 0x0Fu;
    }
    if (byte < 0xF8) {
        return byte & 0x07u;
    }
    return byte < 0xFC ? byte & 0x03u : byte < 0xFE ? byte & 0x01u : 0u;
}

// Reads a character as SQLite does: a lead byte takes every continuation byte that follows, whatever their
// number; a continuation byte without a lead stands for itself. Higher bits than 32 are lost.
inline char32_t readCharacter(Bytes& position, Bytes end) {
    const std::uint8_t byte = *position++;
    if (!isLead(byte)) {
        return byte;
    }
    char32_t character = leadBits(byte);
    while (position != end && isContinuation(*position)) {
        character = (character << 6) + (*position++ & 0x3Fu);
    }
    const bool isNone =
        character < 0x80 || (character & 0xFFFFF800u) == 0xD800 || (character & 0xFFFFFFFEu) == 0xFFFE;
    return isNone ? replacement : character;
}

Bytes skipCharacters(Bytes position, Bytes end, std::size_t count) {
    for (; count > 0; --count) {
        if (position == end) {
            return nullptr;
        }
        readCharacter(position, end);
    }
    return position;
}

// The first position in [begin, end) that has the anchor's two bytes, or null.
template <typename Anchor>
Bytes findAnchor(const Anchor& anchor, Bytes begin, Bytes end) {
    using Block [[gnu::vector_size(16)]] = std::uint8_t;
    constexpr std::size_t blockSize = sizeof(Block);
    const Block first = anchor.first - Block{}, firstMask = anchor.firstMask - Block{};
    const Block second = anchor.second - Block{}, secondMask = anchor.secondMask - Block{};
    const auto load = [](Bytes position) {
        Block block;
        std::memcpy(&block, position, blockSize);
        return block;
    };
    const auto isHere = [&](Bytes position) {
        return (*position | anchor.firstMask) == anchor.first &&
               (position[anchor.distance] | anchor.secondMask) == anchor.second;
    };
    const auto left = [&](Bytes position) {
        return static_cast<std::size_t>(end - position);
    };
    while (left(begin) >= blockSize + anchor.distance) {
        const auto found =
            ((load(begin) | firstMask) == first) & ((load(begin + anchor.distance) | secondMask) == second);
        std::uint64_t halves[2];
        static_assert(sizeof halves == sizeof found);
        std::memcpy(halves, &found, sizeof halves);
        if ((halves[0] | halves[1]) != 0) {
            return std::find_if(begin, begin + blockSize,
                                [&](const std::uint8_t& byte) { return isHere(&byte); });
        }
        begin += blockSize;
    }
    for (; left(begin) > anchor.distance; ++begin) {
        if (isHere(begin)) {
            return begin;
        }
    }
    return nullptr;
}

} // namespace

LikePattern::LikePattern(std::string_view pattern) {
    pattern = pattern.substr(0, pattern.find('\0'));
    const auto begin = reinterpret_cast<Bytes>(pattern.data());
    const Bytes end = begin + pattern.size();
    m_isOpenAtStart = pattern.starts_with('%');
    m_isOpenAtEnd = pattern.ends_with('%');

    for (Bytes position = begin; position != end;) {
        if (*position == '%') {
            ++position;
            continue;
        }
        Part part;
        while (position != end && *position != '%') {
            const bool isAny = *position == '_';
            const char32_t character = readCharacter(position, end);
            if (isAny && part.characters.empty()) {
                ++part.leadingAny;
            } else {
                part.characters.push_back(isAny ? anyCharacter : fold(character));
            }
        }
        prepareSearch(part);
        m_parts.push_back(std::move(part));
    }
}

void LikePattern::prepareSearch(Part& part) {
    if (part.characters.empty()) {
        return;
    }
    const auto low6 = [](char32_t bits) {
        return static_cast<std::uint8_t>(0x80 | (bits & 0x3F));
    };
    const char32_t character = part.characters.front();
    part.search = Part::Search::atAnchor;
    if (character < 0x80) {
        // The first and the last of the ASCII characters at the start.
        const auto runEnd = std::find_if(part.characters.begin(), part.characters.end(),
                                         [](char32_t next) { return next == anyCharacter || next >= 0x80; });
        const char32_t last = *(runEnd - 1);
        const auto mask = [](char32_t letter) {
            return static_cast<std::uint8_t>(isLetter(letter) ? 0x20 : 0);
        };
        part.anchor = {static_cast<std::uint8_t>(character), mask(character), static_cast<std::uint8_t>(last),
                       mask(last), static_cast<std::size_t>(runEnd - part.characters.begin()) - 1};
    } else if (character >= 0x800) {
        // However it is spelled, its lowest twelve bits are in its last two bytes.
        part.anchor = {low6(character >> 6), 0, low6(character), 0, 1};
    } else {
        part.anchor = {low6(character), 0, low6(character), 0, 0};
    }
    if (character == replacement) {
        part.search = Part::Search::characterByCharacter; // it also stands for what cannot be read
    }
}

// The end of the match of the part's characters at `position`, or null.
LikePattern::Bytes LikePattern::matchAt(const Part& part, Bytes position, Bytes end) {
    for (const char32_t wanted : part.characters) {
        if (position == end) {
            return nullptr;
        }
        const char32_t character = readCharacter(position, end);
        if (fold(character) != wanted && wanted != anyCharacter) {
            return nullptr;
        }
    }
    return position;
}

// The end of the part's leftmost match in [begin, end), or null. With `toEnd` it has to be `end`.
LikePattern::Bytes LikePattern::find(const Part& part, Bytes begin, Bytes end, bool toEnd) {
    begin = skipCharacters(begin, end, part.leadingAny);
    if (begin == nullptr) {
        return nullptr;
    }
    if (part.search == Part::Search::anyPosition) {
        return toEnd ? end : begin;
    }
    if (part.search == Part::Search::atAnchor) {
        return findAtAnchor(part, begin, end, toEnd);
    }
    for (Bytes position = begin; position != end; readCharacter(position, end)) {
        const Bytes matchEnd = matchAt(part, position, end);
        if (matchEnd != nullptr && (!toEnd || matchEnd == end)) {
            return matchEnd;
        }
    }
    return nullptr;
}

LikePattern::Bytes LikePattern::findAtAnchor(const Part& part, Bytes begin, Bytes end, bool toEnd) {
    const bool isAscii = part.characters.front() < 0x80;
    Bytes strayEnd = begin; // continuation bytes before this are known to have no lead byte
    for (Bytes from = begin;;) {
        const Bytes anchor = findAnchor(part.anchor, from, end);
        if (anchor == nullptr) {
            return nullptr;
        }
        Bytes candidate = anchor;
        from = anchor + 1;
        if (!isAscii && anchor >= strayEnd) {
            // A character of several bytes, found by its last ones. Each run of continuation bytes is walked
            // once.
            while (candidate != begin && isContinuation(*candidate)) {
                --candidate;
            }
            const Bytes runEnd = std::find_if_not(anchor, end, isContinuation);
            if (isLead(*candidate)) {
                from = runEnd;
            } else {
                candidate = anchor;
                strayEnd = runEnd;
            }
        }
        const Bytes matchEnd = matchAt(part, candidate, end);
        if (matchEnd != nullptr && (!toEnd || matchEnd == end)) {
            return matchEnd;
        }
    }
}

bool LikePattern::matches(std::string_view text) const {
    auto position = reinterpret_cast<Bytes>(text.data());
    Bytes end = position + text.size();
    if (m_parts.empty()) {
        return m_isOpenAtStart || position == end || *position == 0;
    }
    const bool isSearch = m_isOpenAtStart && m_isOpenAtEnd;
    if (isSearch && m_parts.size() == 1 && m_parts.front().search == Part::Search::atAnchor &&
        findAnchor(m_parts.front().anchor, position, end) == nullptr) {
        return false; // the usual case, decided without looking for a NUL
    }
    if (const void* nul = position != end ? std::memchr(position, 0, text.size()) : nullptr) {
        end = static_cast<Bytes>(nul);
    }
    for (const Part& part : m_parts) {
        const bool toEnd = &part == &m_parts.back() && !m_isOpenAtEnd;
        if (&part == &m_parts.front() && !m_isOpenAtStart) {
            position = skipCharacters(position, end, part.leadingAny);
            position = position != nullptr ? matchAt(part, position, end) : nullptr;
            if (toEnd && position != end) {
                return false;
            }
        } else {
            position = find(part, position, end, toEnd);
        }
        if (position == nullptr) {
            return false;
        }
    }
    return true;
}

} // namespace corvatto
