#include "L10n.h"

#include <QHash>

namespace {

// Interim English table; the full four-language tables replace it.
const QHash<QString, QString>& englishTable()
{
    static const QHash<QString, QString> table{
        {QStringLiteral("alert.pdf_open"), QStringLiteral("Couldn’t open PDF")},
        {QStringLiteral("file.none"), QStringLiteral("No file")},
        {QStringLiteral("show.new"), QStringLiteral("New set")},
        {QStringLiteral("open.pdf_ellipsis"), QStringLiteral("Open PDF…")},
        {QStringLiteral("slide.of"), QStringLiteral("Slide %d of %d")},
        {QStringLiteral("slide.none"), QStringLiteral("No slide")},
    };
    return table;
}

QString format(const QString& text, const std::vector<L10n::Arg>& args)
{
    QString out;
    std::size_t next = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c != u'%' || i + 1 >= text.size()) {
            out += c;
            continue;
        }
        const QStringView rest = QStringView(text).mid(i + 1);
        auto arg = [&]() -> const L10n::Arg* { return next < args.size() ? &args[next++] : nullptr; };
        if (rest.startsWith(u'd')) {
            if (auto a = arg())
                out += std::holds_alternative<qint64>(*a) ? QString::number(std::get<qint64>(*a)) : QString();
            i += 1;
        } else if (rest.startsWith(u"@")) {
            if (auto a = arg())
                out += std::holds_alternative<QString>(*a) ? std::get<QString>(*a) : QString();
            i += 1;
        } else if (rest.startsWith(u".2f")) {
            if (auto a = arg())
                out += std::holds_alternative<double>(*a) ? QString::number(std::get<double>(*a), 'f', 2) : QString();
            i += 3;
        } else {
            out += c;
        }
    }
    return out;
}

}

QString L10n::lookup(const QString& key, const std::vector<Arg>* args)
{
    const auto& table = englishTable();
    const auto it = table.constFind(key);
    const QString text = it == table.constEnd() ? key : *it;
    return args ? format(text, *args) : text;
}
