#pragma once

#include "base/RawEnum.h"

#include <QLocale>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

class PreferencesStore;

// The interface languages, in the order of the language picker.
enum class AppLanguage { russian, english, chinese, german };

// Raw values: what the "interfaceLanguage" preference stores, and also the
// identifier of the locale that formats numbers in that language.
inline constexpr RawEnumTable<AppLanguage, 4> appLanguages{{{
    {AppLanguage::russian, "ru"},
    {AppLanguage::english, "en"},
    {AppLanguage::chinese, "zh-Hans"},
    {AppLanguage::german, "de"},
}}};

namespace AppLanguages {

// The name shown in the picker, the same in every interface language.
QString displayName(AppLanguage language);
// The locale that formats numbers in texts of this language.
QLocale locale(AppLanguage language);

// The language in force: the stored "interfaceLanguage" when it is one of the
// raw values, read afresh at every call; otherwise `detected()`.
AppLanguage current();
// The language chosen from the preferred UI languages.
AppLanguage detected();
// The choice itself: the first tag that begins (case-insensitively) with
// "ru", "en", "de" or "zh", tested in that order, decides; Russian when none
// does.
AppLanguage detect(const QStringList& preferredTags);

// The store that `current()` reads; the model hands over its own when it is
// made. Held weakly: once the store is gone, `current()` is `detected()`.
void readPreferencesFrom(std::weak_ptr<const PreferencesStore> store);
// Run at every `current()`: the model registers a read of the language it
// holds, so a view that shows texts follows a switch without naming it.
// Held weakly, like the store.
void noteReadsWith(std::weak_ptr<const std::function<void()>> onRead);
// Where `detected()` takes the preferred UI languages from. Without a source
// (the default, or an empty function) they are the system's; tests inject
// their own so that the result does not depend on the machine.
void setPreferredLanguagesSource(std::function<QStringList()> source);

}
