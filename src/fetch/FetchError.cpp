#include "fetch/FetchError.h"

namespace corvatto {
namespace {

QString descriptionOf(FetchError::Code code) {
    switch (code) {
    case FetchError::unknown:
        return QStringLiteral("发生未知的网络错误");
    case FetchError::cancelled:
        return QStringLiteral("检查已取消");
    case FetchError::timedOut:
        return QStringLiteral("连接超时");
    case FetchError::cannotFindHost:
        return QStringLiteral("找不到服务器");
    case FetchError::cannotConnectToHost:
        return QStringLiteral("无法连接到服务器");
    case FetchError::networkConnectionLost:
        return QStringLiteral("与服务器的连接已中断");
    case FetchError::tooManyRedirects:
        return QStringLiteral("重定向次数过多");
    case FetchError::notConnectedToInternet:
        return QStringLiteral("网络未连接");
    case FetchError::badServerResponse:
        return QStringLiteral("服务器的响应无效");
    case FetchError::secureConnectionRequired:
        return QStringLiteral("更新服务器的地址不是安全的 HTTPS 地址");
    case FetchError::dataLengthExceedsMaximum:
        return QStringLiteral("服务器返回的数据过大");
    case FetchError::secureConnectionFailed:
        return QStringLiteral("无法建立安全连接");
    }
    return {};
}

} // namespace

FetchError FetchError::loading(Code code, const QString& detail) {
    QString description = descriptionOf(code);
    description += detail.isEmpty() ? QStringLiteral("。") : QStringLiteral("：") + detail;
    return {QStringLiteral("NSURLErrorDomain"), code, description};
}

FetchError FetchError::undecodable() {
    return {QStringLiteral("NSCocoaErrorDomain"), 4864, QStringLiteral("更新信息的格式不正确。")};
}

} // namespace corvatto
