#include "HistoryTest.h"

#include "Pixels.h"
#include "history/EmptyShelf.h"
#include "history/HistoryShelf.h"
#include "history/HistoryView.h"
#include "history/SearchField.h"
#include "support/Eventually.h"
#include "support/FakeRelativeTimes.h"

#include <QAbstractAnimation>
#include <QAccessible>
#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QScrollBar>
#include <QTest>

namespace corvatto {
namespace {

class View : public test::HistoryTest {
protected:
    test::FakeRelativeTimes relativeTimes;
    HistoryView view{viewModel, pasteboard, relativeTimes};
    SearchField& field = view.searchField();
    HistoryShelf& shelf = *view.findChild<HistoryShelf*>();
    EmptyShelf& emptyShelf = *view.findChild<EmptyShelf*>();
    QToolButton& clearButton = *view.findChild<QToolButton*>();
    int searches = 0;

    void show() {
        view.resize(1000, 440);
        view.show();
        view.activateWindow();
        ASSERT_TRUE(test::eventually([this] { return field.hasFocus(); }));
        QObject::connect(&viewModel, &HistoryViewModel::itemsChanged, &view, [this] { ++searches; });
    }
    QString status() {
        for (const QLabel* label : view.findChildren<QLabel*>()) {
            if (!label->text().isEmpty()) {
                return label->text();
            }
        }
        return {};
    }
    void fill(int count) {
        recordNumbered(count);
        viewModel.refresh();
        show();
        scroll(0);
    }
    void scroll(int value) {
        ASSERT_TRUE(test::eventually([this] { return isAtRest(); }));
        shelf.horizontalScrollBar()->setValue(value);
    }
    bool isAtRest() { return shelf.findChild<QAbstractAnimation*>()->state() == QAbstractAnimation::Stopped; }
    QString cardAt(int x) {
        const ClipboardItem* item = shelf.cardAt({x, 170});
        return item != nullptr ? item->content.prefix() : QStringLiteral("-");
    }
    void click(int x) { QTest::mouseClick(shelf.viewport(), Qt::LeftButton, {}, {x, 170}); }
    void secondClick(int x) {
        const QPoint position(x, 170);
        QMouseEvent event(QEvent::MouseButtonDblClick, position, shelf.viewport()->mapToGlobal(position),
                          Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(shelf.viewport(), &event);
    }
    // Opens the context menu at a position; it is closed before the next one.
    QMenu* menuAt(QWidget& widget, const QPoint& position) {
        if (QWidget* open = QApplication::activePopupWidget()) {
            open->close();
        }
        QContextMenuEvent event(QContextMenuEvent::Mouse, position, widget.mapToGlobal(position));
        QApplication::sendEvent(&widget, &event);
        return qobject_cast<QMenu*>(QApplication::activePopupWidget());
    }
    static QString entries(const QMenu* menu) {
        QStringList titles;
        for (const QAction* action : menu != nullptr ? menu->actions() : QList<QAction*>()) {
            titles << (action->isSeparator() ? QStringLiteral("-") : action->text());
        }
        return titles.join(u'|');
    }
};

const QString panelEntries = QStringLiteral("清空所有历史|-|偏好设置...|-|关于");

TEST_F(View, EachCharacterSearchesOnceAndTheClearButtonStartsOver) {
    show();
    EXPECT_TRUE(emptyShelf.isVisible() && !shelf.isVisible());
    EXPECT_EQ(status() + field.placeholderText(), u"0 条历史记录搜索历史记录...Esc 关闭窗口。");
    const QImage drawing = emptyShelf.grab().toImage();
    EXPECT_LT(test::share(drawing, QRect(350, 90, 300, 180), drawing.pixelColor(0, 0)), 0.95);

    recordNumbered(150);
    viewModel.refresh();
    EXPECT_TRUE(shelf.isVisible() && !emptyShelf.isVisible());
    EXPECT_EQ(status(), u"100 条历史记录") << "what is on show, not what is stored";
    searches = 0;
    QTest::keyClick(&field, Qt::Key_1);
    QTest::keyClick(&field, Qt::Key_4);
    EXPECT_EQ(searches, 2);
    EXPECT_EQ(status() + selected(), u"12 条历史记录149"); // 14, 114, 140 to 149
    QTest::mouseClick(&clearButton, Qt::LeftButton);
    EXPECT_EQ(searches, 3);
    EXPECT_EQ(status() + selected() + field.text(), u"100 条历史记录148");
    EXPECT_TRUE(field.hasFocus() && !clearButton.isVisible());

    viewModel.setSearchText(QStringLiteral("77")); // bound both ways
    EXPECT_EQ(field.text() + status(), u"771 条历史记录");
    EXPECT_TRUE(clearButton.isVisible());
    QTest::keyClick(&field, Qt::Key_Return);
    EXPECT_EQ(pasteboard.content.text, u"77");
    EXPECT_EQ(dismissals, 1);
}

TEST_F(View, ItsLinesAreEquallyThickAtAnyScale) {
    view.resize(1000, 440);
    view.ensurePolished();
    for (const double ratio : {1.0, 1.25, 1.5, 2.0}) {
        QImage image((QSizeF(1000, 440) * ratio).toSize(), QImage::Format_RGB32);
        image.setDevicePixelRatio(ratio);
        view.render(&image);
        QList<int> rows; // the top edge and the two dividers
        for (int y = 0; y < image.height(); ++y) {
            if (image.pixelColor(image.width() - 5, y).value() < 215) {
                rows << y;
            }
        }
        const auto thickness = static_cast<int>(ratio);
        ASSERT_EQ(rows.size(), 3 * thickness) << ratio;
        for (const int line : {0, 1, 2}) {
            EXPECT_EQ(rows[(line + 1) * thickness - 1], rows[line * thickness] + thickness - 1) << ratio;
        }
        EXPECT_EQ(rows[0], 0);
    }
}

TEST_F(View, ADoubleClickCopiesTheCardThatWasClickedFirst) {
    fill(10);
    scroll(500);
    ASSERT_EQ(cardAt(900), u"5");
    click(900);
    EXPECT_EQ(selected(), u"5");
    ASSERT_TRUE(test::eventually([this] { return isAtRest() && cardAt(900) == u"4"; })) << "moved on";
    viewModel.setSelectedItemId(newest().id);
    secondClick(900);
    EXPECT_EQ(pasteboard.content.text, u"5");
    EXPECT_EQ(dismissals, 1);

    scroll(0);
    click(356);
    QTest::mouseClick(shelf.viewport(), Qt::RightButton, {}, {400, 170});
    secondClick(356);
    EXPECT_EQ(selected(), u"9") << "nothing between cards, and by the first button only";
    EXPECT_EQ(dismissals, 1);
}

TEST_F(View, TheSelectedCardComesToTheCentre) {
    fill(20);
    const auto centre = [this](int row) {
        return 28 + row * 338 + 160 - shelf.horizontalScrollBar()->value();
    };
    viewModel.setSelectedItemId(viewModel.items()[10].id);
    EXPECT_GT(centre(10), 1000) << "not at a jump";
    viewModel.setSelectedItemId(viewModel.items()[12].id); // while it moves
    EXPECT_TRUE(test::eventually([&] { return std::abs(centre(12) - 500) <= 1 && isAtRest(); }));
    record({"newer"});
    viewModel.refresh(); // a new list is shown around its own selection
    EXPECT_TRUE(test::eventually([&] { return std::abs(centre(1) - 500) <= 1 && isAtRest(); }));
}

TEST_F(View, MenusOfferWhatTheyAreOpenedOn) {
    record({"C", "B", "A"});
    show();
    QWidget& cards = *shelf.viewport();
    QMenu* menu = menuAt(cards, {800, 100});
    EXPECT_EQ(entries(menu), QStringLiteral("复制到剪贴板|-|") + panelEntries);
    ASSERT_EQ(selected(), u"B");
    menu->actions().first()->trigger();
    EXPECT_EQ(pasteboard.content.text, u"C") << "the card of the menu, not the one selected";
    EXPECT_EQ(dismissals, 1);

    const QPointer<QMenu> closed = menu;
    EXPECT_EQ(entries(menuAt(cards, {500, 5})), panelEntries) << "beside the cards";
    EXPECT_TRUE(test::eventually([&] { return closed.isNull(); })) << "menus do not pile up";
    record({"3", "2", "1"});
    viewModel.refresh();
    QScrollBar* indicator = nullptr;
    for (QScrollBar* bar : shelf.findChildren<QScrollBar*>()) {
        indicator = bar->isVisible() ? bar : indicator;
    }
    ASSERT_NE(indicator, nullptr) << "more cards than fit";
    EXPECT_EQ(entries(menuAt(*indicator, {300, 5})), panelEntries) << "and none of the scroll bar's own";
    QApplication::activePopupWidget()->close();
    int movements[2]; // by a notch of the wheel over the cards and over the scroll bar
    for (const int i : {0, 1}) {
        scroll(0);
        QWidget& under = i == 0 ? cards : *indicator;
        const QPointF position(300, 5);
        QWheelEvent notch(position, under.mapToGlobal(position), {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(&under, &notch);
        movements[i] = shelf.horizontalScrollBar()->value();
    }
    EXPECT_EQ(movements[0], movements[1]);
    EXPECT_GT(movements[0], 100);

    menu = menuAt(view, {500, 51});
    QString asked;
    viewModel.showPreferences = [&] {
        asked += u"preferences ";
    };
    viewModel.showAbout = [&] {
        asked += u"about ";
    };
    viewModel.confirmClearAll = [&] {
        asked += u"clear";
        return true;
    };
    for (const int entry : {2, 4, 0}) {
        menu->actions()[entry]->trigger();
    }
    EXPECT_EQ(asked, u"preferences about clear");
    EXPECT_TRUE(emptyShelf.isVisible());
    view.hide();
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr) << "closes with the panel";
}

TEST_F(View, ASelectionOfAScreenReaderIsWhatReturnCopies) {
    record({"C", "B", "A"});
    show();
    QAccessibleInterface* card = QAccessible::queryAccessibleInterface(&shelf)->child(2);
    ASSERT_NE(card, nullptr);
    card->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
    EXPECT_EQ(selected(), u"C");
    QTest::keyClick(&field, Qt::Key_Return);
    EXPECT_EQ(pasteboard.content.text, u"C");
}

TEST_F(View, AnyWindowThatGetsTheKeyboardSendsTheTypingPointToTheField) {
    show();
    viewModel.setSearchText(QStringLiteral("A"));
    clearButton.setFocus();
    QTest::keyClick(&clearButton, Qt::Key_B);
    EXPECT_EQ(field.text(), u"Ab") << "typed into the field";
    clearButton.setFocus();
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    EXPECT_EQ(view.focusWidget(), &field);
}

} // namespace
} // namespace corvatto
