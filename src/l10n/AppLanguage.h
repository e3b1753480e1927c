#pragma once

#include "model/RawEnum.h"

enum class AppLanguage { russian, english, chinese, german };

inline constexpr RawEnumTable<AppLanguage, 4> appLanguages{{{
    {AppLanguage::russian, "ru"},
    {AppLanguage::english, "en"},
    {AppLanguage::chinese, "zh-Hans"},
    {AppLanguage::german, "de"},
}}};

#include <QStringList>

namespace AppLanguages {
// The language chosen from preferred UI language tags, tested by prefix in
// the order ru, en, de, zh; Russian when none matches.
AppLanguage detect(const QStringList& preferredTags);
// The same for the system's preferred languages.
AppLanguage detected();
}
