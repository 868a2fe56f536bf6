// The retention limits that the user set. Read afresh at each call, so a changed limit applies at the next
// one.
#pragma once

#include "settings/UserDefault.h"

namespace corvatto {

// The settings outlive this object. Main thread.
class Preferences {
public:
    explicit Preferences(const UserDefaults& defaults);

    // The most entries kept. Below 1: no limit, which is also what an absent or non-integer value gives.
    qint64 maxItemCount() const;

    // The days that an entry is kept after its last copy. Below 1: no limit, as above.
    qint64 maxRetentionDays() const;

private:
    UserDefault<qint64> m_maxItemCount;
    UserDefault<qint64> m_maxRetentionDays;
};

} // namespace corvatto
