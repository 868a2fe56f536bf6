#include "HistoryTest.h"

#include "history/HistoryShelf.h"
#include "support/Eventually.h"
#include "support/FakeRelativeTimes.h"

#include <QAbstractAnimation>
#include <QMouseEvent>
#include <QScrollBar>
#include <QTest>

namespace corvatto {
namespace {

class Shelf : public test::HistoryTest {
protected:
    test::FakeRelativeTimes relativeTimes;
    HistoryShelf shelf{viewModel, relativeTimes};

    void fill(int count) {
        recordNumbered(count);
        viewModel.refresh();
        shelf.resize(1000, HistoryShelf::shelfHeight);
        shelf.show();
        scroll(0);
    }
    void scroll(int value) {
        ASSERT_TRUE(test::eventually([this] { return isAtRest(); }));
        shelf.horizontalScrollBar()->setValue(value);
    }
    bool isAtRest() { return shelf.findChild<QAbstractAnimation*>()->state() == QAbstractAnimation::Stopped; }
    QString cardAt(int x, int y = 170) {
        const ClipboardItem* item = shelf.cardAt({x, y});
        return item != nullptr ? item->content : QStringLiteral("-");
    }
    void click(int x) { QTest::mouseClick(shelf.viewport(), Qt::LeftButton, {}, {x, 170}); }
    void secondClick(int x) {
        const QPointF position(x, 170);
        QMouseEvent event(QEvent::MouseButtonDblClick, position, shelf.viewport()->mapToGlobal(position),
                          Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(shelf.viewport(), &event);
    }
};

TEST_F(Shelf, CardsLieInTheirPlaces) {
    fill(10); // "9" is the first
    QString row;
    for (const int x : {27, 28, 347, 348, 365, 366, 685, 686}) {
        row += cardAt(x);
    }
    EXPECT_EQ(row, u"-99--88-");
    EXPECT_EQ(cardAt(100, 17) + cardAt(100, 18) + cardAt(100, 337) + cardAt(100, 338), u"-99-");
    EXPECT_EQ(shelf.horizontalScrollBar()->maximum(), 28 + 10 * 320 + 9 * 18 + 28 - 1000);
    scroll(shelf.horizontalScrollBar()->maximum());
    EXPECT_EQ(cardAt(971) + cardAt(972), u"0-");

    shelf.resize(1000, 342); // lower than cards with their padding are
    ASSERT_TRUE(test::eventually([this] { return cardAt(900, 12) == u"0"; }));
    EXPECT_EQ(cardAt(900, 11) + cardAt(900, 329) + cardAt(900, 330), u"-0-");
}

TEST_F(Shelf, AClickSelectsACardAndNothingBetweenCards) {
    fill(10);
    click(100);
    EXPECT_EQ(selected(), u"9");
    scroll(0);
    click(356);
    EXPECT_EQ(selected(), u"9");
    QTest::mouseClick(shelf.viewport(), Qt::RightButton, {}, {400, 170});
    EXPECT_EQ(selected(), u"9") << "only the first button selects";
    EXPECT_EQ(pasteboard.count, 1);
}

TEST_F(Shelf, ADoubleClickCopiesTheCardThatWasClickedFirst) {
    fill(10);
    scroll(500);
    ASSERT_EQ(cardAt(900), u"5");
    click(900);
    ASSERT_TRUE(test::eventually([this] { return isAtRest() && cardAt(900) == u"4"; })) << "moved on";
    viewModel.setSelectedItemId(newest().id);
    secondClick(900);
    EXPECT_EQ(pasteboard.content.text, u"5");
    EXPECT_EQ(dismissals, 1);

    scroll(0);
    click(356);
    secondClick(356);
    EXPECT_EQ(dismissals, 1) << "between cards";
}

TEST_F(Shelf, TheSelectedCardComesToTheCentreInLittleTime) {
    fill(20);
    const auto centre = [this](int row) {
        return 28 + row * 338 + 160 - shelf.horizontalScrollBar()->value();
    };
    const auto select = [this](int row) {
        viewModel.setSelectedItemId(viewModel.items()[row].id);
    };
    select(10);
    EXPECT_GT(centre(10), 1000) << "not at a jump";
    select(12); // while it moves
    EXPECT_TRUE(test::eventually([&] { return std::abs(centre(12) - 500) <= 1 && isAtRest(); }));
    EXPECT_EQ(shelf.currentIndex().row(), 12);
    viewModel.setSelectedItemId(std::nullopt);
    EXPECT_TRUE(isAtRest()) << "no selection moves nothing";

    select(19); // as far as it goes
    EXPECT_TRUE(test::eventually(
        [&] { return shelf.horizontalScrollBar()->value() == shelf.horizontalScrollBar()->maximum(); }));
    // A new list is shown around its own selection.
    record({"newer"});
    viewModel.refresh();
    EXPECT_TRUE(test::eventually([&] { return std::abs(centre(1) - 500) <= 1 && isAtRest(); }));
}

} // namespace
} // namespace corvatto
