// A view model on a real store in a temporary directory. Each reading of its clock is a second later.
#pragma once

#include "history/HistoryViewModel.h"
#include "support/FakePasteboard.h"
#include "support/FakeUserDefaults.h"
#include "support/Printing.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace corvatto::test {

class HistoryTest : public ::testing::Test {
protected:
    QTemporaryDir home;
    FakeUserDefaults defaults;
    Preferences preferences{defaults};
    std::chrono::seconds time{1'700'000'000};
    ClipboardStore store{home.path(), preferences, [this] {
                             return std::chrono::system_clock::time_point(++time);
                         }};
    FakePasteboard pasteboard;
    HistoryViewModel viewModel{store, pasteboard};

    HistoryTest() { store.finish(); } // with its opening

    // The last one is the newest.
    void record(const QStringList& texts) {
        for (const QString& text : texts) {
            store.insertOrUpdate(text, QStringLiteral("Editor"));
        }
    }

    ClipboardItem newest() { return store.fetchRecent(std::nullopt, 1).value(0); }
    QString selected() const {
        for (const ClipboardItem& item : viewModel.items()) {
            if (item.id == viewModel.selectedItemId()) {
                return item.content.prefix();
            }
        }
        return QStringLiteral("(none)");
    }
};

} // namespace corvatto::test
