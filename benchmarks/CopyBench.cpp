// How long the program is held up by what other programs copy and paste.
#include "DataSets.h"
#include "ProgramFigure.h"
#include "Screenshot.h"
#include "Suites.h"

#include "base/PngEncoding.h"

namespace corvatto::bench {
namespace {

using Kind = BenchDesktop::Kind;

QByteArray textOf(qsizetype bytes) {
    return QByteArray("The clipboard remembers what was copied. ").repeated(bytes / 41 + 1).left(bytes);
}

// Each time in a program of its own, whose panel is open, with a history of its own. `measure` returns
// seconds.
void add(const std::string& name, Kind kind, QString (*history)(),
         const std::function<double(ProgramUnderTest&)>& measure) {
    benchmark::RegisterBenchmark(name.c_str(),
                                 [=](benchmark::State& state) {
                                     orExit([&] {
                                         const OwnHistory own(history());
                                         ProgramUnderTest program(kind, own.directory());
                                         program.start();
                                         program.waitForKeyboard();
                                         for (auto _ : state) {
                                             state.SetIterationTime(measure(program));
                                         }
                                     });
                                 })
        ->Iterations(1)
        ->Repetitions(5)
        ->UseManualTime();
}

QString aThousand() {
    return dataSet(1'000);
}

void addCopies(Kind kind) {
    using Copy = void (ProgramUnderTest::*)(const QByteArray&);
    const auto addStall = [kind](const char* name, Copy copy, QByteArray (*content)()) {
        add(figureOn(kind, name), kind, aThousand, [=](ProgramUnderTest& program) {
            program.hide();
            const QByteArray bytes = content();
            return program.stallWhile([&] { (program.*copy)(bytes); });
        });
    };
    const Copy text = &ProgramUnderTest::copyText, picture = &ProgramUnderTest::copyPicture;
    addStall("1 KB of text copied: stall", text, [] { return textOf(1'024); });
    addStall("photograph of 3840x2160 copied: stall", picture, [] { return encodePng(photograph(1)); });
    addStall("desktop text of 3840x2160 copied: stall", picture, [] { return encodePng(screenshot(1)); });
    addStall("54 MB of text copied: stall", text, [] { return textOf(54'000'000); });
    // By a request: on sway, the shortcut has to start a program first.
    add(figureOn(kind, "first showing after 54 MB of text"), kind, aThousand, [](ProgramUnderTest& program) {
        program.hide();
        program.copyText(textOf(54'000'000));
        return program.requestToggle();
    });
}

double startAgain(ProgramUnderTest& program) {
    program.stop();
    return program.start();
}

double stallOfWord(ProgramUnderTest& program) {
    return program.stallWhile([&] { program.copyText("a word"); });
}

// Of a photograph that was copied back from the history.
double stallOfOtherFormats(ProgramUnderTest& program) {
    program.hide();
    program.copyPicture(encodePng(photograph(1)));
    program.copyText("a word");
    program.show();
    program.press("Return", [&] { return !program.isPanelPainted(); });
    return program.stallWhile([&] {
        for (const char* format : {"image/tiff", "image/bmp", "image/jpeg"}) {
            program.paste(format);
        }
    });
}

} // namespace

void addCopyFigures(Kind kind) {
    addCopies(kind);
    if (kind == Kind::X11) {
        add("photograph asked for as TIFF, BMP, JPEG: stall", kind, aThousand, stallOfOtherFormats);
        add("start with a hundred texts of 5 MB", kind, longTexts, startAgain);
        add("word copied, these texts shown: stall", kind, longTexts, stallOfWord);
    }
}

} // namespace corvatto::bench
