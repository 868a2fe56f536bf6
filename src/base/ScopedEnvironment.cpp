#include "base/ScopedEnvironment.h"

namespace corvatto {

ScopedEnvironment::ScopedEnvironment(std::initializer_list<std::pair<const char*, const char*>> variables) {
    for (const auto& [name, value] : variables) {
        m_before.emplace_back(name,
                              qEnvironmentVariableIsSet(name) ? std::optional(qgetenv(name)) : std::nullopt);
        value != nullptr ? qputenv(name, value) : qunsetenv(name);
    }
}

ScopedEnvironment::~ScopedEnvironment() {
    for (auto variable = m_before.rbegin(); variable != m_before.rend(); ++variable) {
        const auto& [name, value] = *variable;
        value ? qputenv(name, *value) : qunsetenv(name);
    }
}

} // namespace corvatto
