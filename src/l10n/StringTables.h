#pragma once

#include "l10n/AppLanguage.h"

#include <QHash>
#include <QString>

#include <cstddef>

// The four constant tables of interface texts. Each holds every key once, in
// the same order; texts are UTF-8 and keep the placeholders (%d, %.2f, %@) of
// the English text in the same order.
namespace l10n {

struct StringPair {
    const char* key;
    const char* text;
};

// Declared with their length: a row too many does not compile, and a missing
// row leaves an empty one at the end, which the table test reports.
inline constexpr std::size_t keyCount = 185;
extern const StringPair englishStrings[keyCount];
extern const StringPair russianStrings[keyCount];
extern const StringPair germanStrings[keyCount];
extern const StringPair chineseStrings[keyCount];

using StringRows = StringPair[keyCount];
// The rows of one language's table.
const StringRows& strings(AppLanguage language);
// One language's table as a map, built once on first use.
const QHash<QString, QString>& table(AppLanguage language);

}
