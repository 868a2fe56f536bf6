#include "settings/SettingsReport.h"

#include "base/Diagnostics.h"
#include "platform/UserDefaults.h"
#include "settings/PollingInterval.h"
#include "settings/Preferences.h"
#include "settings/SettingsKeys.h"
#include "settings/Shortcut.h"

namespace corvatto {
namespace {

QStringList unusedValues(const UserDefaults& defaults) {
    QStringList lines;
    const auto compare = [&](const QString& key, double used, const QString& accepted) {
        const QVariant stored = defaults.object(key);
        const auto number = exactNumber(stored);
        if (!stored.isValid() || number == used) {
            return;
        }
        // Only numbers are repeated: a text might hold anything, line feeds included.
        const QString what = number ? QStringLiteral("%1, not %2").arg(*number, 0, 'g', 12).arg(accepted)
                                    : QStringLiteral("no number");
        lines << QStringLiteral("[UserDefaults] ERROR: %1 is %2; %3 is used.").arg(key, what).arg(used);
    };
    const QString wholeNumber = QStringLiteral("a whole number");
    const Preferences preferences(defaults);
    compare(SettingsKeys::clipboardPollingInterval, pollingInterval(defaults),
            QStringLiteral("between 0.1 and 5"));
    compare(SettingsKeys::maxItemCount, static_cast<double>(preferences.maxItemCount()), wholeNumber);
    compare(SettingsKeys::maxRetentionDays, static_cast<double>(preferences.maxRetentionDays()), wholeNumber);
    const Shortcut registered = registeredShortcut(defaults);
    compare(SettingsKeys::hotkeyKeyCode, static_cast<double>(registered.keyCode),
            QStringLiteral("the code of a key"));
    compare(SettingsKeys::hotkeyModifiers, static_cast<double>(registered.modifiers),
            QStringLiteral("a sum of modifiers"));
    return lines;
}

} // namespace

SettingsReport::SettingsReport(const UserDefaults& defaults) : m_defaults(defaults) {
    connect(&m_defaults, &UserDefaults::didChange, this, &SettingsReport::printNew);
    printNew();
}

void SettingsReport::printNew() {
    const QStringList lines = unusedValues(m_defaults);
    for (const QString& line : lines) {
        if (!m_printed.contains(line)) {
            printLine(line);
        }
    }
    m_printed = lines;
}

} // namespace corvatto
