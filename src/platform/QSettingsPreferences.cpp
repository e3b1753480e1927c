#include "QSettingsPreferences.h"

QSettingsPreferences::QSettingsPreferences()
    : settings_(std::make_unique<QSettings>(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("Brelvonic"),
                                            QStringLiteral("PDF Brelvonic")))
{
}

QSettingsPreferences::QSettingsPreferences(const QString& iniPath)
    : settings_(std::make_unique<QSettings>(iniPath, QSettings::IniFormat))
{
}

QVariant QSettingsPreferences::value(const QString& key) const
{
    return settings_->value(key);
}

void QSettingsPreferences::setValue(const QString& key, const QVariant& value)
{
    settings_->setValue(key, value);
}
