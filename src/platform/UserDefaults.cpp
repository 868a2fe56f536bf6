#include "platform/UserDefaults.h"

#include <cmath>

namespace corvatto {

std::optional<qint64> exactInteger(const QVariant& value) {
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::LongLong:
        return value.toLongLong();
    case QMetaType::Double: {
        const double number = value.toDouble();
        constexpr double limit = 9223372036854775808.0; // 2^63, exact in a double
        if (number >= -limit && number < limit && std::trunc(number) == number) {
            return static_cast<qint64>(number);
        }
        return std::nullopt;
    }
    case QMetaType::QString: {
        bool ok = false;
        const qint64 number = value.toString().toLongLong(&ok, 10);
        return ok ? std::optional(number) : std::nullopt;
    }
    default:
        return std::nullopt;
    }
}

std::optional<double> exactNumber(const QVariant& value) {
    bool ok = false;
    double number = 0;
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::Double:
    case QMetaType::QString:
        number = value.toDouble(&ok);
        break;
    default:
        break;
    }
    return ok && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

void UserDefaults::registerDefaults(const QVariantMap& defaults) {
    m_registered.insert(defaults);
}

QVariant UserDefaults::object(const QString& key) const {
    const QVariant stored = storedObject(key);
    return stored.isValid() ? stored : m_registered.value(key);
}

qint64 UserDefaults::integer(const QString& key) const {
    const QVariant value = object(key);
    if (const auto whole = exactInteger(value)) {
        return *whole;
    }
    const auto number = exactNumber(value);
    return number ? exactInteger(std::trunc(*number)).value_or(0) : 0;
}

double UserDefaults::number(const QString& key) const {
    return exactNumber(object(key)).value_or(0.0);
}

std::optional<QString> UserDefaults::string(const QString& key) const {
    const QVariant value = object(key);
    return value.canConvert<QString>() ? std::optional(value.toString()) : std::nullopt;
}

void UserDefaults::setInteger(const QString& key, qint64 value) {
    setObject(key, value);
}

void UserDefaults::setNumber(const QString& key, double value) {
    setObject(key, value);
}

} // namespace corvatto
