#include "hotkey/ShortcutNames.h"

#include "platform/HotKeyCenter.h"

#include <QHash>
#include <QStringList>

namespace corvatto {
namespace {

using Labels = QHash<qint64, QString>;

// Labels, separated by spaces, for codes that follow one another.
void addRun(Labels& labels, qint64 firstCode, const QString& run) {
    for (const QString& label : run.split(QLatin1Char(' '))) {
        labels.insert(firstCode++, label);
    }
}

Labels allLabels() {
    Labels labels;
    addRun(labels, 0, QStringLiteral("A S D F H G Z X C V"));
    addRun(labels, 11, QStringLiteral("B Q W E R Y T"));
    addRun(labels, 18, QStringLiteral("1 2 3 4 6 5 = 9 7 - 8 0"));
    addRun(labels, 30, QStringLiteral("] O U [ I P"));
    addRun(labels, 36, QStringLiteral("↩"));
    addRun(labels, 37, QStringLiteral("L J ' K ; \\ , / N M ."));
    addRun(labels, 48, QStringLiteral("⇥ ␣ ` ⌫"));
    addRun(labels, 53, QStringLiteral("⎋"));
    const QList<qint64> functionKeys{122, 120, 99, 118, 96, 97, 98, 100, 101, 109, 103, 111};
    for (qsizetype i = 0; i < functionKeys.size(); ++i) {
        labels.insert(functionKeys[i], QStringLiteral("F%1").arg(i + 1));
    }
    addRun(labels, 123, QStringLiteral("← → ↓ ↑"));
    return labels;
}

} // namespace

QString keyName(qint64 keyCode) {
    static const Labels labels = allLabels();
    const auto label = labels.constFind(keyCode);
    return label != labels.constEnd() ? *label : QString::number(keyCode);
}

QString shortcutString(qint64 keyCode, qint64 modifiers) {
    QString text;
    text += (modifiers & controlKey) != 0 ? QStringLiteral("⌃") : QString();
    text += (modifiers & optionKey) != 0 ? QStringLiteral("⌥") : QString();
    text += (modifiers & shiftKey) != 0 ? QStringLiteral("⇧") : QString();
    text += (modifiers & commandKey) != 0 ? QStringLiteral("⌘") : QString();
    return text + keyName(keyCode);
}

} // namespace corvatto
