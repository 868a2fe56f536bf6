#include "app/AboutPanel.h"

#include "settings/ProductAddresses.h"

namespace corvatto {

Alert aboutAlert(const QString& version) {
    const QString about =
        QStringLiteral("\n一款轻量级、完全免费的 macOS 剪贴板历史工具，帮助你记录、搜索和复用剪贴板内容，"
                       "CV 工程师的核心生产力。\n\n\n版本：v ") +
        version + QStringLiteral("\n反馈：") + ProductAddresses::feedback + QStringLiteral("\n网站：") +
        ProductAddresses::website;
    return {QStringLiteral("Corvatto"), about, Alert::Style::Informational, {QStringLiteral("确定")}};
}

} // namespace corvatto
