#include "AppLanguage.h"

#include <QLocale>

namespace AppLanguages {

AppLanguage detect(const QStringList& preferredTags)
{
    static const std::pair<const char*, AppLanguage> prefixes[] = {
        {"ru", AppLanguage::russian},
        {"en", AppLanguage::english},
        {"de", AppLanguage::german},
        {"zh", AppLanguage::chinese},
    };
    for (const QString& tag : preferredTags) {
        const QString lower = tag.toLower();
        for (const auto& [prefix, language] : prefixes)
            if (lower.startsWith(QLatin1StringView(prefix)))
                return language;
    }
    return AppLanguage::russian;
}

AppLanguage detected()
{
    return detect(QLocale::system().uiLanguages());
}

}
