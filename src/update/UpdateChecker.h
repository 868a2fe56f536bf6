// Asks the maker's site whether there is a newer version and tells the user in a modal alert. A manual check
// always answers; an automatic one is silent unless there is a newer version that the user has not skipped.
//
// A check that fails prints four lines, and leaves the time of the last check as it is.
#pragma once

#include "platform/Alerts.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"
#include "settings/SettingsKeys.h"
#include "update/FetchProcess.h"
#include "update/UpdateInfo.h"

#include <QCoroTask>
#include <QObject>
#include <QUrl>

namespace corvatto {

// Main thread.
class UpdateChecker : public QObject {
    Q_OBJECT

public:
    // What a check needs of the desktop. All outlive the checker.
    struct Services {
        UserDefaults& defaults;
        Alerts& alerts;
        Workspace& workspace;
    };

    static inline const QString& lastCheckKey = SettingsKeys::corvattoLastUpdateCheckAt;
    static inline const QString& ignoredVerKey = SettingsKeys::corvattoIgnoredUpdateVersion;
    static constexpr double checkInterval = 86'400; // seconds; the least time between automatic checks

    // `updateURL` must be one that the helper loads, otherwise each check fails. An empty `localVersion`
    // counts as 0.0.0.
    UpdateChecker(const Services& services, const FetchHelper& helper, const QUrl& updateURL,
                  const QString& localVersion);

    // The checker that the composition root, which owns it, has installed for the process. There must be one.
    static UpdateChecker& shared();
    static void install(UpdateChecker& checker);

    // Returns once the request is on its way; the rest follows from the event loop, until the last alert has
    // been answered. Checks may overlap. Throws nothing, and ends silently when the checker is destroyed.
    QCoro::Task<> checkForUpdates(bool manual);

private:
    QCoro::Task<UpdateInfo> fetchUpdateInfo();
    QString localVersionString() const;
    void report(const FetchError& error, bool manual);
    void showUpdateAlert(const UpdateInfo& info, const QString& localVersion);
    void showAlert(const QString& title, const QString& message);

    Services m_services;
    FetchHelper m_helper;
    QUrl m_updateURL;
    QString m_localVersion;
};

} // namespace corvatto
