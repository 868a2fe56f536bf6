#include "HistoryTest.h"

#include "Pixels.h"
#include "history/EmptyShelf.h"
#include "history/HistoryShelf.h"
#include "history/HistoryView.h"
#include "history/SearchField.h"
#include "support/Eventually.h"
#include "support/FakeRelativeTimes.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
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

    void show(int height = 440) {
        view.resize(1000, height);
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
    QRect inView(const QWidget& widget) { return {widget.mapTo(&view, QPoint()), widget.size()}; }

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

TEST_F(View, RowsHaveTheirHeightsAndWhatIsLeftOverIsAboveTheShelf) {
    record({"text"});
    show();
    EXPECT_EQ(inView(*field.parentWidget()), QRect(0, 0, 1000, 48));
    EXPECT_EQ(inView(shelf), QRect(0, 440 - 28 - 1 - 356, 1000, 356));
    EXPECT_EQ(view.minimumSizeHint(), QSize(700, 380));
    const QImage panel = view.grab().toImage();
    EXPECT_EQ(test::share(panel, QRect(0, 49, 1000, 6), QColor(229, 229, 229)), 1.0);
    for (const int divider : {48, 411}) {
        const QRect line(0, divider, 1000, 1);
        EXPECT_EQ(test::share(panel, line, panel.pixelColor(0, divider)), 1.0);
        EXPECT_LT(panel.pixelColor(0, divider).lightness(), 229);
    }
    view.resize(1000, 420); // as on a screen of 1000 points: the shelf gives way, nothing else
    EXPECT_TRUE(test::eventually([this] { return inView(shelf) == QRect(0, 49, 1000, 342); }));
}

TEST_F(View, NoEntriesShowTheEmptyState) {
    show();
    EXPECT_TRUE(emptyShelf.isVisible());
    EXPECT_FALSE(shelf.isVisible());
    EXPECT_EQ(status(), u"0 条历史记录");
    EXPECT_EQ(field.placeholderText(), u"搜索历史记录...Esc 关闭窗口。");

    const QImage drawing = emptyShelf.grab().toImage();
    EXPECT_LT(test::share(drawing, QRect(350, 90, 300, 180), drawing.pixelColor(0, 0)), 0.95)
        << "in the middle";

    record({"text"});
    viewModel.refresh();
    EXPECT_TRUE(shelf.isVisible() && !emptyShelf.isVisible());
}

TEST_F(View, EachCharacterSearchesOnceAndTheClearButtonStartsOver) {
    recordNumbered(150);
    show();
    EXPECT_EQ(status(), u"100 条历史记录") << "what is on show, not what is stored";
    EXPECT_FALSE(clearButton.isVisible());

    QTest::keyClick(&field, Qt::Key_1);
    EXPECT_EQ(searches, 1);
    EXPECT_TRUE(clearButton.isVisible());
    QTest::keyClick(&field, Qt::Key_4);
    EXPECT_EQ(searches, 2);
    EXPECT_EQ(status(), u"12 条历史记录"); // 14, 114, 140 to 149
    EXPECT_EQ(selected(), u"149");

    QTest::mouseClick(&clearButton, Qt::LeftButton);
    EXPECT_EQ(searches, 3);
    EXPECT_EQ(field.text(), QString());
    EXPECT_TRUE(field.hasFocus());
    EXPECT_EQ(status() + selected(), u"100 条历史记录148");
    EXPECT_FALSE(clearButton.isVisible());

    QTest::keyClick(&field, Qt::Key_Q);
    EXPECT_EQ(status() + selected(), u"0 条历史记录(none)");
    QTest::keyClick(&field, Qt::Key_Backspace);
    EXPECT_EQ(searches, 5);
    EXPECT_FALSE(clearButton.isVisible());

    viewModel.setSearchText(QStringLiteral("77")); // bound both ways
    EXPECT_EQ(field.text() + status(), u"771 条历史记录");
    QTest::keyClick(&field, Qt::Key_Return);
    EXPECT_EQ(pasteboard.content.text, u"77");
    EXPECT_EQ(dismissals, 1);
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
    EXPECT_EQ(entries(menuAt(view, {500, 51})), panelEntries);
    EXPECT_EQ(entries(menuAt(*view.findChild<QLabel*>(), {2, 2})), panelEntries);
    record({"3", "2", "1"});
    viewModel.refresh();
    QScrollBar* indicator = nullptr;
    for (QScrollBar* bar : shelf.findChildren<QScrollBar*>()) {
        indicator = bar->isVisible() ? bar : indicator;
    }
    ASSERT_NE(indicator, nullptr) << "more cards than fit";
    EXPECT_EQ(entries(menuAt(*indicator, {300, 5})), panelEntries) << "and none of the scroll bar's own";

    menu = menuAt(view, {500, 51});
    menu->actions()[2]->trigger(); // with nobody to show anything
    menu->actions()[4]->trigger();
    QString asked;
    viewModel.showPreferences = [&] {
        asked += u"preferences ";
    };
    viewModel.showAbout = [&] {
        asked += u"about";
    };
    menu->actions()[2]->trigger();
    menu->actions()[4]->trigger();
    EXPECT_EQ(asked, u"preferences about");
    bool answer = false;
    viewModel.confirmClearAll = [&] {
        return answer;
    };
    menu->actions().first()->trigger();
    EXPECT_EQ(status(), u"6 条历史记录");
    answer = true;
    menu->actions().first()->trigger();
    EXPECT_EQ(status(), u"0 条历史记录");
    EXPECT_TRUE(emptyShelf.isVisible());
    menu->close();
}

TEST_F(View, AnyWindowThatGetsTheKeyboardSendsTheTypingPointToTheField) {
    record({"A"});
    show();
    viewModel.setSearchText(QStringLiteral("A"));
    clearButton.setFocus();
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    EXPECT_EQ(view.focusWidget(), &field);
}

} // namespace
} // namespace corvatto
