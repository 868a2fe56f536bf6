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
    int dismissals = 0;

    void SetUp() override {
        viewModel.onDismiss = [this] {
            ++dismissals;
        };
    }

    // The last one is the newest.
    void record(std::initializer_list<const char*> texts) {
        for (const char* text : texts) {
            store.insertOrUpdate(QString::fromUtf8(text), QStringLiteral("Editor"));
        }
    }
    void recordNumbered(int count) {
        for (int i = 0; i < count; ++i) {
            record({QByteArray::number(i).constData()});
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
    QString shown() const {
        QStringList contents;
        for (const ClipboardItem& item : viewModel.items()) {
            contents << item.content.prefix();
        }
        return contents.join(u' ');
    }
};

} // namespace corvatto::test
