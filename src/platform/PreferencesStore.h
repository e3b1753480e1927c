#pragma once

#include <QString>
#include <QVariant>

// Per-user typed key/value store that survives restarts.
class PreferencesStore {
public:
    virtual ~PreferencesStore() = default;
    // An invalid QVariant when the key was never written.
    virtual QVariant value(const QString& key) const = 0;
    virtual void setValue(const QString& key, const QVariant& value) = 0;
};
