#pragma once

#include "platform/PreferencesStore.h"

#include <QSettings>

#include <memory>

// The per-user settings store (organisation "Brelvonic", application
// "PDF Brelvonic"); a file path gives a private store for tests.
class QSettingsPreferences final : public PreferencesStore {
public:
    QSettingsPreferences();
    explicit QSettingsPreferences(const QString& iniPath);
    QVariant value(const QString& key) const override;
    void setValue(const QString& key, const QVariant& value) override;

private:
    std::unique_ptr<QSettings> settings_;
};
