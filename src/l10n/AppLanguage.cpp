#include "AppLanguage.h"

#include "platform/PreferencesStore.h"

namespace AppLanguages {

namespace {

std::weak_ptr<const PreferencesStore>& preferences()
{
    static std::weak_ptr<const PreferencesStore> store;
    return store;
}

std::weak_ptr<const std::function<void()>>& readHook()
{
    static std::weak_ptr<const std::function<void()>> hook;
    return hook;
}

std::function<QStringList()>& preferredLanguages()
{
    static std::function<QStringList()> source;
    return source;
}

}

QString displayName(AppLanguage language)
{
    switch (language) {
    case AppLanguage::russian: return QStringLiteral("Русский");
    case AppLanguage::english: return QStringLiteral("English");
    case AppLanguage::chinese: return QStringLiteral("中文");
    case AppLanguage::german: return QStringLiteral("Deutsch");
    }
    return {};
}

QLocale locale(AppLanguage language)
{
    QLocale result(appLanguages.rawValue(language));
    // Numbers in texts carry the locale's decimal mark but no digit grouping.
    result.setNumberOptions(QLocale::OmitGroupSeparator);
    return result;
}

AppLanguage current()
{
    if (const auto onRead = readHook().lock())
        (*onRead)();
    if (const auto store = preferences().lock()) {
        const QVariant stored = store->value(QStringLiteral("interfaceLanguage"));
        if (const auto language = appLanguages.fromRaw(stored.toString()))
            return *language;
    }
    return detected();
}

AppLanguage detected()
{
    const auto& source = preferredLanguages();
    return detect(source ? source() : QLocale::system().uiLanguages());
}

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

void readPreferencesFrom(std::weak_ptr<const PreferencesStore> store)
{
    preferences() = std::move(store);
}

void noteReadsWith(std::weak_ptr<const std::function<void()>> onRead)
{
    readHook() = std::move(onRead);
}

void setPreferredLanguagesSource(std::function<QStringList()> source)
{
    preferredLanguages() = std::move(source);
}

}
