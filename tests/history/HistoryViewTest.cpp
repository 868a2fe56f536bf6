#include "HistoryTest.h"

#include "Pixels.h"
#include "history/EmptyShelf.h"
#include "history/HistoryShelf.h"
#include "history/HistoryView.h"
#include "history/SearchField.h"
#include "support/Eventually.h"
#include "support/FakeRelativeTimes.h"
#include "ui/TextLabel.h"

#include <QAbstractAnimation>
#include <QAccessible>
#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QScrollBar>
#include <QSignalSpy>
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
    TextLabel& status = *view.findChild<TextLabel*>();

    // Shows the panel with entries from 0 on.
    void show(int count) {
        for (int i = 0; i < count; ++i) {
            record({QString::number(i)});
        }
        viewModel.refresh();
        view.resize(1000, 440);
        view.show();
        view.activateWindow();
        ASSERT_TRUE(test::eventually([this] { return field.hasFocus(); }));
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
    void click(int x, Qt::MouseButton button = Qt::LeftButton) {
        QTest::mouseClick(shelf.viewport(), button, {}, {x, 170});
    }
    void secondClick(int x) { QTest::mouseDClick(shelf.viewport(), Qt::LeftButton, {}, {x, 170}); }
    static QMenu* menuAt(QWidget& widget, const QPoint& position) {
        QContextMenuEvent event(QContextMenuEvent::Mouse, position, widget.mapToGlobal(position));
        QApplication::sendEvent(&widget, &event);
        return qobject_cast<QMenu*>(QApplication::activePopupWidget());
    }
    static QString entries(const QMenu* menu) {
        QStringList titles;
        for (const QAction* action : menu->actions()) {
            titles << (action->isSeparator() ? QStringLiteral("-") : action->text());
        }
        return titles.join(u'|');
    }
};

const QString panelEntries = QStringLiteral("清空所有历史|-|偏好设置...|-|关于");

TEST_F(View, EachCharacterSearchesOnceAndTheClearButtonStartsOver) {
    show(0);
    EXPECT_TRUE(emptyShelf.isVisible() && !shelf.isVisible());
    EXPECT_EQ(status.text(), u"0 条历史记录");
    const QImage drawing = emptyShelf.grab().toImage();
    EXPECT_LT(test::share(drawing, QRect(350, 90, 300, 180), drawing.pixelColor(0, 0)), 0.95);

    show(150);
    EXPECT_TRUE(shelf.isVisible() && !emptyShelf.isVisible());
    EXPECT_EQ(status.text(), u"100 条历史记录") << "what is on show, not what is stored";
    QSignalSpy searches(&viewModel, &HistoryViewModel::itemsChanged);
    QTest::keyClicks(&field, QStringLiteral("14"));
    EXPECT_EQ(searches.size(), 2);
    EXPECT_EQ(status.text() + selected(), u"12 条历史记录149"); // 14, 114, 140 to 149
    QTest::mouseClick(&clearButton, Qt::LeftButton);
    EXPECT_EQ(searches.size(), 3);
    EXPECT_EQ(status.text() + selected() + field.text(), u"100 条历史记录148");
    EXPECT_TRUE(field.hasFocus() && !clearButton.isVisible());
}

TEST_F(View, ItsLinesAreEquallyThickAtAnyScale) {
    view.resize(1000, 440);
    view.ensurePolished();
    for (const double ratio : {1.0, 1.25, 1.5, 2.0}) {
        QImage image((QSizeF(1000, 440) * ratio).toSize(), QImage::Format_RGB32);
        image.setDevicePixelRatio(ratio);
        view.render(&image);
        QString column;
        for (int y = 0; y < image.height(); ++y) {
            column += image.pixelColor(image.width() - 5, y).value() < 215 ? u'#' : u' ';
        }
        const QString line(static_cast<int>(ratio), u'#'); // the top edge and the two dividers
        EXPECT_EQ(column.split(u' ', Qt::SkipEmptyParts), QStringList({line, line, line})) << ratio;
        EXPECT_TRUE(column.startsWith(line));
    }
}

TEST_F(View, ADoubleClickCopiesTheCardThatWasClickedFirst) {
    show(10);
    scroll(500);
    ASSERT_EQ(cardAt(900), u"5");
    click(900);
    EXPECT_EQ(selected(), u"5");
    ASSERT_TRUE(test::eventually([this] { return isAtRest() && cardAt(900) == u"4"; })) << "moved on";
    viewModel.setSelectedItemId(newest().id);
    secondClick(900);
    EXPECT_EQ(pasteboard.content.text, u"5");
    const qint64 count = pasteboard.count;

    scroll(0);
    click(356);
    click(400, Qt::RightButton);
    secondClick(356);
    EXPECT_EQ(selected(), u"9") << "nothing between cards, and by the first button only";
    EXPECT_EQ(pasteboard.count, count);
}

TEST_F(View, TheSelectedCardComesToTheCentre) {
    show(20);
    const auto centre = [this](int row) {
        return 28 + row * 338 + 160 - shelf.horizontalScrollBar()->value();
    };
    viewModel.setSelectedItemId(viewModel.items()[10].id);
    EXPECT_GT(centre(10), 1000) << "not at a jump";
    viewModel.setSelectedItemId(viewModel.items()[12].id); // while it moves
    EXPECT_TRUE(test::eventually([&] { return std::abs(centre(12) - 500) <= 1 && isAtRest(); }));
    viewModel.refresh(); // a new list is shown around its own selection
    EXPECT_TRUE(test::eventually([&] { return std::abs(centre(1) - 500) <= 1 && isAtRest(); }));
}

TEST_F(View, MenusOfferWhatTheyAreOpenedOn) {
    show(6);
    QWidget& cards = *shelf.viewport();
    const QPointer<QMenu> menu = menuAt(cards, {800, 100});
    EXPECT_EQ(entries(menu), QStringLiteral("复制到剪贴板|-|") + panelEntries);
    menu->actions().first()->trigger();
    menu->close();
    EXPECT_EQ(pasteboard.content.text, u"3") << "the card of the menu, not the one selected";

    EXPECT_EQ(entries(menuAt(cards, {500, 5})), panelEntries) << "beside the cards";
    EXPECT_TRUE(test::eventually([&] { return menu.isNull(); })) << "menus do not pile up";
    auto& indicator = *shelf.findChild<QScrollBar*>({}, Qt::FindDirectChildrenOnly);
    EXPECT_EQ(entries(menuAt(indicator, {300, 5})), panelEntries) << "and none of the scroll bar's own";

    const QMenu& panelMenu = *menuAt(view, {500, 51});
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
        panelMenu.actions()[entry]->trigger();
    }
    EXPECT_EQ(asked, u"preferences about clear");
    EXPECT_TRUE(emptyShelf.isVisible());
}

TEST_F(View, ANotchOfTheWheelMovesAsFarOverTheScrollBarAsOverTheCards) {
    show(10);
    const auto notchOver = [this](QWidget* under) {
        scroll(0);
        QWheelEvent notch({300, 5}, under->mapToGlobal(QPointF(300, 5)), {}, {0, -120}, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(under, &notch);
        return shelf.horizontalScrollBar()->value();
    };
    EXPECT_GT(notchOver(shelf.viewport()), 100);
    EXPECT_EQ(notchOver(shelf.findChild<QScrollBar*>({}, Qt::FindDirectChildrenOnly)),
              notchOver(shelf.viewport()));
}

TEST_F(View, AScreenReaderMaySelect) {
    show(3);
    QAccessibleInterface* card = QAccessible::queryAccessibleInterface(&shelf)->child(2);
    ASSERT_NE(card, nullptr);
    card->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
    EXPECT_EQ(selected(), u"0");
}

TEST_F(View, AnyWindowThatGetsTheKeyboardSendsTheTypingPointToTheField) {
    show(1);
    field.setText(QStringLiteral("A"));
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
