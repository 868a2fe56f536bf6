// Settings in memory.
#pragma once

#include "platform/UserDefaults.h"

namespace corvatto::test {

class FakeUserDefaults : public UserDefaults {
public:
    QVariantMap stored;

    void setObject(const QString& key, const QVariant& value) override {
        stored[key] = value;
        Q_EMIT didChange();
    }

protected:
    QVariant storedObject(const QString& key) const override { return stored.value(key); }
};

} // namespace corvatto::test
