#include "update/UpdateChecker.h"

#include "base/Diagnostics.h"
#include "update/VersionComparison.h"

#include <QDateTime>
#include <QPointer>

#include <optional>

namespace corvatto {
namespace {

constexpr int httpOk = 200;

QPointer<UpdateChecker> installed;

double secondsSince1970() {
    return static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000.0;
}

// Absent unless `text` is a web address. The document might name a file, or the scheme of some program, which
// must not be opened.
std::optional<QUrl> webAddress(const QString& text) {
    const QUrl url(text, QUrl::StrictMode);
    const bool isWeb = url.scheme() == u"https" || url.scheme() == u"http";
    return url.isValid() && isWeb && !url.host().isEmpty() ? std::optional(url) : std::nullopt;
}

} // namespace

UpdateChecker::UpdateChecker(const Services& services, const FetchHelper& helper, const QUrl& updateURL,
                             const QString& localVersion)
    : m_services(services), m_helper(helper), m_updateURL(updateURL), m_localVersion(localVersion) {}

UpdateChecker& UpdateChecker::shared() {
    Q_ASSERT_X(installed, "UpdateChecker::shared", "no checker is installed");
    return *installed;
}

void UpdateChecker::install(UpdateChecker& checker) {
    installed = &checker;
}

QCoro::Task<> UpdateChecker::checkForUpdates(bool manual) {
    const QPointer<UpdateChecker> self(this);
    const std::optional<QString> ignoredVersion = m_services.defaults.string(ignoredVerKey);
    std::optional<UpdateInfo> info;
    FetchError error;
    try {
        info = co_await fetchUpdateInfo();
    } catch (const FetchError& thrown) {
        error = thrown;
    }
    if (!self) {
        co_return;
    }
    if (!info) {
        report(error, manual);
        co_return;
    }

    m_services.defaults.setNumber(lastCheckKey, secondsSince1970());
    const QString localVersion = localVersionString();
    if (isRemoteVersion(info->latestVersion, localVersion)) {
        if (manual || ignoredVersion != info->latestVersion) {
            showUpdateAlert(*info, localVersion);
        }
    } else if (manual) {
        showAlert(QStringLiteral("已是最新版本"), QStringLiteral("当前版本 %1 已是最新。").arg(localVersion));
    }
}

QCoro::Task<UpdateInfo> UpdateChecker::fetchUpdateInfo() {
    FetchProcess fetching(m_helper, m_updateURL);
    // Resumes checkForUpdates(), which finds the checker destroyed and ends.
    connect(this, &QObject::destroyed, &fetching, &FetchProcess::cancel);
    const FetchResponse response = co_await fetching.response();
    if (response.status != httpOk) {
        throw FetchError::loading(FetchError::badServerResponse,
                                  QStringLiteral("HTTP %1").arg(response.status));
    }
    const std::optional<UpdateInfo> info = UpdateInfo::decode(response.body);
    if (!info) {
        throw FetchError::undecodable();
    }
    co_return *info;
}

QString UpdateChecker::localVersionString() const {
    return m_localVersion.isEmpty() ? QStringLiteral("0.0.0") : m_localVersion;
}

void UpdateChecker::report(const FetchError& error, bool manual) {
    printLine(QStringLiteral("[UpdateChecker] ERROR (manual=%1):")
                  .arg(manual ? QStringLiteral("true") : QStringLiteral("false")));
    printLine(QStringLiteral("  domain: %1, code: %2").arg(error.domain).arg(error.code));
    printLine(QStringLiteral("  description: ") + error.description);
    printLine(QStringLiteral("  URL: ") + m_updateURL.toString(QUrl::FullyEncoded));
    if (manual) {
        showAlert(QStringLiteral("检查更新失败"), error.description);
    }
}

void UpdateChecker::showUpdateAlert(const UpdateInfo& info, const QString& localVersion) {
    enum Button { download, remindLater, skipThisVersion };
    const QPointer<UpdateChecker> self(this);
    // Closing the alert, or quitting while it is open, must not skip a version for good.
    const int chosen = m_services.alerts.runModal(
        {.messageText = QStringLiteral("发现新版本"),
         .informativeText = QStringLiteral("当前版本：") + localVersion + QStringLiteral("\n最新版本：") +
                            info.latestVersion + QStringLiteral("\n\n更新内容：\n") + info.updateLog,
         .style = Alert::Style::Informational,
         .buttons = {QStringLiteral("下载更新"), QStringLiteral("稍后提醒"), QStringLiteral("跳过此版本")},
         .buttonOnClosing = remindLater});
    if (!self) {
        return;
    }
    if (chosen == download) {
        if (const auto address = webAddress(info.downloadURL)) {
            m_services.workspace.openURL(*address);
        }
    } else if (chosen == skipThisVersion) {
        m_services.defaults.setObject(ignoredVerKey, info.latestVersion);
    }
}

void UpdateChecker::showAlert(const QString& title, const QString& message) {
    m_services.alerts.runModal({title, message, Alert::Style::Informational, {QStringLiteral("确定")}});
}

} // namespace corvatto
