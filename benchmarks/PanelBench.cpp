// Painting: single cards, and the shelf while it scrolls over texts of any size.
#include "Stall.h"
#include "Suites.h"

#include "history/CardImages.h"
#include "history/CharacterCounts.h"
#include "history/HistoryCardView.h"
#include "history/HistoryShelf.h"
#include "support/FakePasteboard.h"
#include "support/FakeRelativeTimes.h"
#include "support/FakeUserDefaults.h"

#include <QImage>
#include <QScrollBar>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace corvatto::bench {
namespace {

QString textOf(qsizetype characters) {
    const QString line = QStringLiteral("The clipboard remembers 剪贴板 what was copied, line by line.\n");
    return line.repeated(characters / line.size() + 1).left(characters);
}

void paintCard(benchmark::State& state, qsizetype characters) {
    CardImages images;
    CharacterCounts counts;
    const test::FakeRelativeTimes relativeTimes;
    ClipboardItem item;
    item.contentType = QStringLiteral("text");
    item.content = textOf(characters);
    QImage canvas(340, 340, QImage::Format_RGB32);
    QPainter painter(&canvas);
    for (auto _ : state) {
        HistoryCardView(item, false, 0)
            .paint(painter, QRectF(10, 10, HistoryCardView::cardWidth, HistoryCardView::cardHeight),
                   {images, counts, relativeTimes, item.lastCopiedAt});
    }
}

// A shelf of sixty texts, of which ten are of 5 MB.
struct LongTexts {
    QTemporaryDir home;
    test::FakeUserDefaults defaults;
    Preferences preferences{defaults};
    ClipboardStore store{home.path(), preferences};
    test::FakePasteboard pasteboard;
    HistoryViewModel viewModel{store, pasteboard};
    test::FakeRelativeTimes relativeTimes;
    HistoryShelf shelf{viewModel, relativeTimes};
    QImage canvas{1920, HistoryShelf::shelfHeight, QImage::Format_RGB32};

    LongTexts() {
        constexpr int count = 60;
        int written = 0; // beside the main thread
        for (int i = 0; i < count; ++i) {
            const bool isLong = i % 6 == 0;
            store.insertOrUpdate(QString::number(i) + textOf(isLong ? 5'000'000 : 300), {},
                                 [&written] { ++written; });
        }
        Stall().timeUntil([&written] { return written == count; });
        viewModel.refresh();
        shelf.resize(canvas.size());
        shelf.show();
        shelf.render(&canvas);
    }
};

void scroll(benchmark::State& state) {
    LongTexts texts;
    QScrollBar& position = *texts.shelf.horizontalScrollBar();
    for (auto _ : state) {
        position.setValue((position.value() + 47) % position.maximum());
        texts.shelf.render(&texts.canvas);
    }
}

void refresh(benchmark::State& state) {
    LongTexts texts;
    int copies = 0;
    for (auto _ : state) {
        state.PauseTiming();
        texts.store.insertOrUpdate(QStringLiteral("new %1").arg(++copies), {});
        state.ResumeTiming();
        texts.viewModel.refresh();
        texts.shelf.render(&texts.canvas);
    }
}

} // namespace

void addPanelFigures() {
    benchmark::RegisterBenchmark("shelf repaint, ten texts of 5 MB", scroll);
    benchmark::RegisterBenchmark("refresh and repaint, ten texts of 5 MB", refresh);
    benchmark::RegisterBenchmark("text card of 300 bytes",
                                 [](benchmark::State& state) { paintCard(state, 300); });
    benchmark::RegisterBenchmark("text card of 5 MB",
                                 [](benchmark::State& state) { paintCard(state, 5'000'000); });
}

} // namespace corvatto::bench
