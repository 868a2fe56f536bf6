// The user's settings: flat keys with typed reads, defaults that are registered for the run, and a
// notification after every change.
#pragma once

#include <QObject>
#include <QString>
#include <QVariant>
#include <QVariantMap>

#include <optional>

namespace corvatto {

// Main thread.
class UserDefaults : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    // Values that answer reads of absent keys. They last for the run and are never written to disk.
    void registerDefaults(const QVariantMap& defaults);

    // The stored value of `key`, else its registered default, else an invalid variant.
    QVariant object(const QString& key) const;

    // Zero when the value is absent or is no number. A fraction is truncated toward zero.
    qint64 integer(const QString& key) const;
    double number(const QString& key) const;

    // Absent when nothing is stored or registered.
    std::optional<QString> string(const QString& key) const;

    // Stores a value at once, on disk as well, and announces it once by didChange(). A value that cannot be
    // written still holds for this run; one line says so.
    virtual void setObject(const QString& key, const QVariant& value) = 0;
    void setInteger(const QString& key, qint64 value);
    void setNumber(const QString& key, double value);

Q_SIGNALS:
    // After a write to any key by this program, and after an edit of the file. Does not tell which key, and
    // may be sent when no value has changed: compare before acting.
    void didChange();

protected:
    // The value stored under `key`, in whatever type the storage gives (often text), or an invalid variant.
    virtual QVariant storedObject(const QString& key) const = 0;

private:
    QVariantMap m_registered;
};

// The conversions behind the typed reads. A text converts when all of it is a decimal number in range.
std::optional<qint64> exactInteger(const QVariant& value);
std::optional<double> exactNumber(const QVariant& value);

} // namespace corvatto
