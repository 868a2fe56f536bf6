// Changes variables of the environment for a while: for a library that reads them in that time, or for a
// program that is started in it.
#pragma once

#include <QByteArray>

#include <initializer_list>
#include <optional>
#include <utility>
#include <vector>

namespace corvatto {

// Main thread, while no other thread looks at the environment.
class ScopedEnvironment {
public:
    // Sets the variables to these values, or removes those whose value is null, until this goes.
    ScopedEnvironment(std::initializer_list<std::pair<const char*, const char*>> variables);
    ~ScopedEnvironment();
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    std::vector<std::pair<const char*, std::optional<QByteArray>>> m_before;
};

} // namespace corvatto
