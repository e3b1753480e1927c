// The JSON form of a show file: encoding, strict decoding, and the notes keys.
#include "show/SavedShow.h"

#include "base/DecimalText.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QUuid>

#include <cmath>
#include <limits>

std::map<QString, QString> SavedShowItem::codedNotes(const std::map<qint64, QString>& notesByPage)
{
    std::map<QString, QString> out;
    for (const auto& [page, text] : notesByPage)
        out[QString::number(page)] = text;
    return out;
}

std::map<qint64, QString> SavedShowItem::notesByPage() const
{
    std::map<qint64, QString> out;
    for (const auto& [name, text] : notes) {
        // Note names are signed decimal integers, as written by this program or by hand.
        const auto page = DecimalText::parseInt64(name);
        if (!page)
            continue;
        // Two names for one page ("7" and "+7") only come from hand edits:
        // the name this program writes wins, else the first in name order.
        if (name == QString::number(*page))
            out[*page] = text;
        else
            out.emplace(*page, text);
    }
    return out;
}

namespace {

QJsonObject encodeCue(const CueBookmark& cue)
{
    return QJsonObject{
        {QStringLiteral("id"), cue.id.toString(QUuid::WithoutBraces).toUpper()},
        {QStringLiteral("pageIndex"), cue.pageIndex},
        {QStringLiteral("title"), cue.title},
    };
}

QJsonObject encodeItem(const SavedShowItem& item)
{
    QJsonObject object;
    object.insert(QStringLiteral("path"), item.path);
    if (item.bookmark)
        object.insert(QStringLiteral("bookmark"), QString::fromLatin1(item.bookmark->toBase64()));
    QJsonArray cues;
    for (const CueBookmark& cue : item.cues)
        cues.append(encodeCue(cue));
    object.insert(QStringLiteral("cues"), cues);
    QJsonObject notes;
    for (const auto& [name, text] : item.notes)
        notes.insert(name, text);
    object.insert(QStringLiteral("notes"), notes);
    return object;
}

// Strict readers: a missing key or a value of another type fails the whole file.
struct Reader {
    const QJsonObject& object;
    bool ok = true;

    QJsonValue required(const char* key)
    {
        const auto it = object.constFind(QLatin1StringView(key));
        if (it == object.constEnd()) {
            ok = false;
            return {};
        }
        return it.value();
    }
    QJsonValue typed(const char* key, bool (QJsonValue::*is)() const)
    {
        const QJsonValue v = required(key);
        ok = ok && (v.*is)();
        return v;
    }
    QString string(const char* key) { return typed(key, &QJsonValue::isString).toString(); }
    double number(const char* key) { return typed(key, &QJsonValue::isDouble).toDouble(); }
    bool boolean(const char* key) { return typed(key, &QJsonValue::isBool).toBool(); }
    QJsonArray array(const char* key) { return typed(key, &QJsonValue::isArray).toArray(); }
    QJsonObject child(const char* key) { return typed(key, &QJsonValue::isObject).toObject(); }
    // A JSON number without a fraction that fits 64 bits (exactly below 2^53).
    qint64 integer(const char* key)
    {
        const double d = number(key);
        constexpr double limit = 9007199254740992.0;  // 2^53
        if (!ok || !std::isfinite(d) || std::trunc(d) != d || std::fabs(d) > limit) {
            ok = false;
            return 0;
        }
        return static_cast<qint64>(d);
    }
};

std::optional<CueBookmark> decodeCue(const QJsonValue& value)
{
    if (!value.isObject())
        return std::nullopt;
    const QJsonObject object = value.toObject();
    Reader r{object};
    const QString id = r.string("id");
    const qint64 page = r.integer("pageIndex");
    const QString title = r.string("title");
    if (!r.ok)
        return std::nullopt;
    // The standard hyphenated form only, in either case.
    const QUuid uuid = QUuid::fromString(id);
    if (id.size() != 36 || uuid.toString(QUuid::WithoutBraces).compare(id, Qt::CaseInsensitive) != 0)
        return std::nullopt;
    if (page < std::numeric_limits<int>::min() || page > std::numeric_limits<int>::max())
        return std::nullopt;
    return CueBookmark{uuid, static_cast<int>(page), title};
}

std::optional<SavedShowItem> decodeItem(const QJsonValue& value)
{
    if (!value.isObject())
        return std::nullopt;
    const QJsonObject object = value.toObject();
    Reader r{object};
    SavedShowItem item;
    item.path = r.string("path");
    const QJsonArray cues = r.array("cues");
    const QJsonObject notes = r.child("notes");
    if (!r.ok)
        return std::nullopt;
    // Optional; a null reads as absent.
    const QJsonValue bookmark = object.value(QStringLiteral("bookmark"));
    if (bookmark.isString()) {
        auto data = QByteArray::fromBase64Encoding(bookmark.toString().toLatin1(),
                                                   QByteArray::AbortOnBase64DecodingErrors);
        if (!data)
            return std::nullopt;
        item.bookmark = *data;
    } else if (!bookmark.isUndefined() && !bookmark.isNull()) {
        return std::nullopt;
    }
    for (const QJsonValue& c : cues) {
        auto cue = decodeCue(c);
        if (!cue)
            return std::nullopt;
        item.cues.push_back(std::move(*cue));
    }
    for (auto it = notes.constBegin(); it != notes.constEnd(); ++it) {
        if (!it.value().isString())
            return std::nullopt;
        item.notes[it.key()] = it.value().toString();
    }
    return item;
}

}

QByteArray SavedShow::encode() const
{
    QJsonArray list;
    for (const SavedShowItem& item : items)
        list.append(encodeItem(item));
    // QJsonObject keeps its members sorted by name, so the output is sorted too.
    QJsonObject root{
        {QStringLiteral("formatVersion"), formatVersion},
        {QStringLiteral("items"), list},
    };
    // A setting never given is written as null: such a file does not read.
    ShowSettings::forEach(settings, [&root](const char* key, const auto& value) {
        root.insert(QLatin1StringView(key), value ? QJsonValue(*value) : QJsonValue());
    });
    return QJsonDocument(root).toJson(QJsonDocument::Indented);
}

std::optional<SavedShow> SavedShow::decode(const QByteArray& json)
{
    QJsonParseError error{};
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    const QJsonObject root = document.object();
    Reader r{root};
    SavedShow show;
    show.formatVersion = r.integer("formatVersion");
    ShowSettings::forEach(show.settings, [&r](const char* key, auto& value) {
        using T = typename std::decay_t<decltype(value)>::value_type;
        if constexpr (std::is_same_v<T, QString>)
            value = r.string(key);
        else if constexpr (std::is_same_v<T, qint64>)
            value = r.integer(key);
        else if constexpr (std::is_same_v<T, double>)
            value = r.number(key);
        else
            value = r.boolean(key);
    });
    const QJsonArray items = r.array("items");
    if (!r.ok)
        return std::nullopt;
    for (const QJsonValue& value : items) {
        auto item = decodeItem(value);
        if (!item)
            return std::nullopt;
        show.items.push_back(std::move(*item));
    }
    return show;
}
