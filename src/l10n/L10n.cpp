#include "L10n.h"

#include "l10n/StringTables.h"

namespace l10n {

const StringRows& strings(AppLanguage language)
{
    switch (language) {
    case AppLanguage::russian: return russianStrings;
    case AppLanguage::chinese: return chineseStrings;
    case AppLanguage::german: return germanStrings;
    case AppLanguage::english: break;
    }
    return englishStrings;
}

const QHash<QString, QString>& table(AppLanguage language)
{
    static const auto build = [](AppLanguage l) {
        QHash<QString, QString> map;
        map.reserve(qsizetype(keyCount));
        for (const StringPair& pair : strings(l))
            map.insert(QString::fromLatin1(pair.key), QString::fromUtf8(pair.text));
        return map;
    };
    static const QHash<QString, QString> tables[] = {
        build(AppLanguage::russian),
        build(AppLanguage::english),
        build(AppLanguage::chinese),
        build(AppLanguage::german),
    };
    return tables[static_cast<int>(language)];
}

}

namespace {

QString argumentText(const L10n::Arg& arg, QChar kind, const QLocale& locale)
{
    if (kind == u'@') {
        if (const auto* text = std::get_if<QString>(&arg))
            return *text;
        if (const auto* number = std::get_if<double>(&arg))
            return locale.toString(*number);
        return locale.toString(std::get<qint64>(arg));
    }
    if (kind == u'd') {
        if (const auto* number = std::get_if<double>(&arg))
            return locale.toString(qint64(*number));
        if (const auto* text = std::get_if<QString>(&arg))
            return *text;
        return locale.toString(std::get<qint64>(arg));
    }
    if (const auto* text = std::get_if<QString>(&arg))
        return *text;
    const double number = std::holds_alternative<double>(arg) ? std::get<double>(arg) : double(std::get<qint64>(arg));
    return locale.toString(number, 'f', 2);
}

// Replaces %d, %.2f and %@ with the arguments in order and %% with %. A
// placeholder without an argument left is kept as written.
QString format(const QString& text, const std::vector<L10n::Arg>& args, const QLocale& locale)
{
    QString out;
    out.reserve(text.size() + 16);
    std::size_t next = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QStringView rest = QStringView(text).mid(i + 1);
        if (text[i] != u'%' || rest.isEmpty()) {
            out += text[i];
            continue;
        }
        qsizetype length = 0;
        QChar kind;
        if (rest.startsWith(u'd') || rest.startsWith(u'@')) {
            length = 1;
            kind = rest[0];
        } else if (rest.startsWith(u".2f")) {
            length = 3;
            kind = u'f';
        } else if (rest.startsWith(u'%')) {
            out += u'%';
            ++i;
            continue;
        }
        if (length == 0 || next >= args.size()) {
            out += text[i];
            continue;
        }
        out += argumentText(args[next++], kind, locale);
        i += length;
    }
    return out;
}

}

QString L10n::lookup(const QString& key, const std::vector<Arg>* args)
{
    const AppLanguage language = AppLanguages::current();
    const auto& own = l10n::table(language);
    auto it = own.constFind(key);
    QString text;
    if (it != own.constEnd()) {
        text = *it;
    } else {
        const auto& english = l10n::table(AppLanguage::english);
        it = english.constFind(key);
        text = it != english.constEnd() ? *it : key;
    }
    return args ? format(text, *args, AppLanguages::locale(language)) : text;
}
