// Most text is a run of characters that stand alone. Between two of these there is always a boundary, so they
// are counted without asking; only what lies between such runs is given to ICU, which knows all the rules.
#include "base/Graphemes.h"

#include <QChar>

#include <unicode/brkiter.h>
#include <unicode/locid.h>
#include <unicode/utext.h>

#include <algorithm>
#include <limits>
#include <memory>

namespace corvatto {
namespace {

// True for characters that never join a neighbour which is simple too. The carriage return is not among them,
// because CR LF is one character.
constexpr bool isSimple(char16_t unit) {
    return (unit >= 0x20 && unit < 0x7F) || (unit >= 0xAE && unit < 0x300) ||        // Latin
           (unit >= 0x370 && unit < 0x483) ||                                        // Greek, Cyrillic
           (unit >= 0x3000 && unit < 0x302A) || (unit >= 0x3041 && unit < 0x3097) || // CJK punctuation, Kana
           (unit >= 0x3400 && unit < 0x4DC0) || (unit >= 0x4E00 && unit < 0xA000) || // Han
           (unit >= 0xAC00 && unit < 0xD7A4) ||
           (unit >= 0xFF01 && unit < 0xFF9E) || // Hangul, full-width forms
           unit == u'\n';
}

icu::BreakIterator* characterBreaks() {
    static const std::unique_ptr<icu::BreakIterator> iterator = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::BreakIterator> created(
            icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
        return U_SUCCESS(status) ? std::move(created) : nullptr;
    }();
    return iterator.get();
}

struct Walk {
    qsizetype count = 0; // characters passed
    qsizetype end = 0;   // where the last of them ends
};

// Lets ICU walk `span`, at most `limit` characters. When the span was cut at an arbitrary place, its last
// character may go on behind the cut and is left for the next walk.
Walk walkComplex(QStringView span, qsizetype limit, bool isCut) {
    icu::BreakIterator* breaks = characterBreaks();
    UErrorCode status = U_ZERO_ERROR;
    UText* text = utext_openUChars(nullptr, span.utf16(), span.size(), &status);
    if (breaks != nullptr) {
        breaks->setText(text, status);
    }
    Walk walk;
    if (breaks == nullptr || U_FAILURE(status)) {
        // Without ICU's data a code unit is the best guess.
        walk.count = walk.end = std::min(limit, span.size());
    } else {
        while (walk.count < limit) {
            const std::int32_t next = breaks->next();
            if (next == icu::BreakIterator::DONE || (isCut && next == span.size() && walk.end > 0)) {
                break;
            }
            walk.end = next;
            ++walk.count;
        }
    }
    utext_close(text);
    return walk;
}

Walk walk(QStringView text, qsizetype limit) {
    Walk total;
    const char16_t* units = text.utf16();
    const qsizetype size = text.size();
    while (total.end < size && total.count < limit) {
        qsizetype at = total.end;
        // A simple character followed by a simple one (or by nothing) is one character by itself. The line
        // feed is simple only when no carriage return stands before it, which the complex branch has seen to.
        while (at < size && total.count < limit && isSimple(units[at]) &&
               (at + 1 == size || isSimple(units[at + 1]))) {
            ++at;
            ++total.count;
        }
        total.end = at;
        if (at >= size || total.count >= limit) {
            break;
        }
        // From here to the next pair of simple characters the rules are ICU's. ICU counts in 32 bits, and a
        // span is cut after at most so many units that it stays small.
        constexpr qsizetype maximumSpan = 1 << 20;
        qsizetype stop = at + 1;
        while (stop < size && stop - at < maximumSpan &&
               !(isSimple(units[stop]) && units[stop] != u'\n' && isSimple(units[stop - 1]))) {
            ++stop;
        }
        const bool isCut = stop < size && stop - at == maximumSpan;
        if (isCut && QChar::isHighSurrogate(units[stop - 1])) {
            ++stop; // half a code point would not be recognized for what it continues
        }
        const Walk part = walkComplex(text.sliced(at, stop - at), limit - total.count, isCut);
        total.count += part.count;
        total.end = at + part.end;
        if (part.end == 0) {
            break;
        }
    }
    return total;
}

} // namespace

qsizetype graphemeCount(QStringView text) {
    return walk(text, std::numeric_limits<qsizetype>::max()).count;
}

QStringView graphemePrefix(QStringView text, qsizetype count) {
    return text.first(walk(text, count).end);
}

} // namespace corvatto
