#include "base/Graphemes.h"

#include <unicode/brkiter.h>
#include <unicode/locid.h>
#include <unicode/utext.h>

#include <algorithm>
#include <limits>
#include <memory>

namespace corvatto {
namespace {

struct Walk {
    qsizetype count = 0; // characters passed
    qsizetype end = 0;   // where the last of them ends
};

// Not with QTextBoundaryFinder: Qt 6.4's tears emoji apart that follow Indic, Thai and some other scripts.
Walk walk(QStringView text, qsizetype limit) {
    UErrorCode status = U_ZERO_ERROR;
    thread_local const std::unique_ptr<icu::BreakIterator> breaks(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    UText units = UTEXT_INITIALIZER;
    utext_openUChars(&units, text.utf16(), text.size(), &status);
    if (breaks) {
        breaks->setText(&units, status);
    }
    Walk passed;
    if (!breaks || U_FAILURE(status)) {
        // Without ICU's data, a code unit is the best guess.
        passed.count = passed.end = std::min(limit, text.size());
    } else {
        while (passed.count < limit) {
            const std::int32_t next = breaks->next();
            if (next == icu::BreakIterator::DONE) {
                break;
            }
            passed.end = next;
            ++passed.count;
        }
    }
    utext_close(&units);
    return passed;
}

} // namespace

qsizetype graphemeCount(QStringView text) {
    return walk(text, std::numeric_limits<qsizetype>::max()).count;
}

QStringView graphemePrefix(QStringView text, qsizetype count) {
    return text.first(walk(text, count).end);
}

} // namespace corvatto
