#pragma once

#include "l10n/AppLanguage.h"

#include <QString>

#include <type_traits>
#include <variant>
#include <vector>

// The one lookup of interface texts: the text of `key` in the language in
// force (`AppLanguages::current()`), else the English text, else the key.
// With arguments the text is formatted: %d takes an integer, %.2f a number
// shown with two decimals, %@ a string, in the order given, numbers in the
// language's locale. Without arguments the text comes back as written.
class L10n {
public:
    using Arg = std::variant<qint64, double, QString>;

    static QString t(const QString& key) { return lookup(key, nullptr); }

    template <typename... A>
    static QString t(const QString& key, const A&... args)
    {
        const std::vector<Arg> list{toArg(args)...};
        return lookup(key, &list);
    }

    // The developer's web site, which the "open.site_web" button names.
    static QString developerSite() { return QStringLiteral("https://brelvonic.app"); }

private:
    static QString lookup(const QString& key, const std::vector<Arg>* args);

    template <typename T>
    static Arg toArg(const T& value)
    {
        if constexpr (std::is_integral_v<T>)
            return static_cast<qint64>(value);
        else if constexpr (std::is_floating_point_v<T>)
            return static_cast<double>(value);
        else
            return QString(value);
    }
};
