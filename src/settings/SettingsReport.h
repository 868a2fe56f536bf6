// Says which stored values are not used as they are, and what is used instead.
#pragma once

#include <QObject>
#include <QStringList>

namespace corvatto {

class UserDefaults;

// Prints a line for each such value, at once and whenever a change brings in another. Main thread.
class SettingsReport : public QObject {
    Q_OBJECT

public:
    // The settings outlive the report.
    explicit SettingsReport(const UserDefaults& defaults);

private:
    void printNew();

    const UserDefaults& m_defaults;
    QStringList m_printed; // what still holds of it
};

} // namespace corvatto
