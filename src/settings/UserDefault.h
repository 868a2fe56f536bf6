// A typed, read-only view of one key of the settings. A value that is absent or does not convert to the type
// reads as the default; nothing is cached, so each read sees the latest write.
#pragma once

#include "platform/UserDefaults.h"

#include <QString>

#include <optional>
#include <type_traits>

namespace corvatto {

// `T` is qint64, double or QString. The settings outlive this object. Main thread.
template <typename T>
class UserDefault {
    static_assert(std::is_same_v<T, qint64> || std::is_same_v<T, double> || std::is_same_v<T, QString>);

public:
    const QString key;
    const T defaultValue;

    UserDefault(const UserDefaults& defaults, QString settingsKey, T valueWhenAbsent)
        : key(std::move(settingsKey)), defaultValue(std::move(valueWhenAbsent)), m_defaults(defaults) {}

    T wrappedValue() const { return stored().value_or(defaultValue); }

private:
    std::optional<T> stored() const {
        if constexpr (std::is_same_v<T, qint64>) {
            return exactInteger(m_defaults.object(key));
        } else if constexpr (std::is_same_v<T, double>) {
            return exactNumber(m_defaults.object(key));
        } else {
            return m_defaults.string(key);
        }
    }

    const UserDefaults& m_defaults;
};

} // namespace corvatto
