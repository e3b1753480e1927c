#include "XbelRecentDocuments.h"

#include "base/AtomicWrite.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QUrl>
#include <QXmlStreamReader>

#include <algorithm>

namespace {

const QString appName = QStringLiteral("PDF Brelvonic");
const QString appExec = QStringLiteral("&apos;pdf-brelvonic %u&apos;");

// One child element of the store as it stands in the file, kept verbatim:
// a bookmark, or whatever else another program put there.
struct Entry {
    QString raw;
    QString path;
    bool isBookmark = false;
    bool ours = false;
    QDateTime ourTime;
    int ourCount = 0;
};

QDateTime parseTime(const QString& text)
{
    QDateTime t = QDateTime::fromString(text, Qt::ISODateWithMs);
    if (!t.isValid())
        t = QDateTime::fromString(text, Qt::ISODate);
    return t;
}

QString timeText(const QDateTime& t)
{
    return t.toUTC().toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss.zzz000Z"));
}

QString escaped(const QString& text)
{
    return text.toHtmlEscaped();
}

const QString defaultRootTag = QStringLiteral(
    "<xbel version=\"1.0\"\n"
    "      xmlns:bookmark=\"http://www.freedesktop.org/standards/desktop-bookmarks\"\n"
    "      xmlns:mime=\"http://www.freedesktop.org/standards/shared-mime-info\"\n"
    ">");

// The store as read: the root's start tag and every complete child element,
// each kept verbatim. `damaged` when the file is not a well-formed store.
struct Store {
    QString doctype;  // kept: other programs' entries may use its entities
    QString rootTag = defaultRootTag;
    QString rootName = QStringLiteral("xbel");
    std::vector<Entry> entries;
    bool damaged = false;
    // Larger than any store the desktop writes: not read, and never
    // rewritten, since what it holds could not be kept.
    bool tooLarge = false;
};

constexpr qint64 maxStoreBytes = 64 << 20;

// The root's own start tag, kept so that the namespace prefixes other
// programs' entries use stay declared; ours are added when the root does not
// declare them. What the root declares is asked of the parser, never looked
// for in the text: an attribute's value may hold anything.
QString openRootTag(QString tag, const QXmlStreamNamespaceDeclarations& declared)
{
    if (tag.endsWith(QStringLiteral("/>")))
        tag.chop(2);
    else
        tag.chop(1);
    const std::pair<const char*, const char*> namespaces[] = {
        {"bookmark", "http://www.freedesktop.org/standards/desktop-bookmarks"},
        {"mime", "http://www.freedesktop.org/standards/shared-mime-info"},
    };
    for (const auto& name : namespaces) {
        const QLatin1StringView prefix(name.first);
        const bool present = std::any_of(declared.begin(), declared.end(),
                                         [&](const QXmlStreamNamespaceDeclaration& d) { return d.prefix() == prefix; });
        if (!present)
            tag += QStringLiteral("\n      xmlns:%1=\"%2\"").arg(prefix, QLatin1StringView(name.second));
    }
    return tag + u'>';
}

// Reads every complete element of the store; what follows a flaw is dropped,
// what precedes it is kept.
Store readStore(const QString& file)
{
    Store store;
    QFile f(file);
    if (!f.open(QIODevice::ReadOnly))
        return store;
    if (f.size() > maxStoreBytes) {
        store.damaged = store.tooLarge = true;
        return store;
    }
    const QString text = QString::fromUtf8(f.readAll());
    QXmlStreamReader xml(text);
    Entry current;
    qsizetype start = -1;
    int depth = 0;
    bool isStore = false;
    while (!xml.atEnd() && !xml.hasError()) {
        const auto token = xml.readNext();
        // The offset is just past the current tag; its '<' is the last one before.
        const auto tagStart = [&] { return text.lastIndexOf(u'<', xml.characterOffset() - 1); };
        if (token == QXmlStreamReader::DTD && depth == 0) {
            store.doctype = xml.text().toString();
        } else if (token == QXmlStreamReader::StartElement) {
            ++depth;
            if (depth == 1) {
                isStore = xml.name() == u"xbel";
                if (isStore) {
                    store.rootName = xml.qualifiedName().toString();
                    const qsizetype at = tagStart();
                    store.rootTag = openRootTag(text.mid(at, xml.characterOffset() - at), xml.namespaceDeclarations());
                }
            } else if (depth == 2 && isStore) {
                start = tagStart();
                current = Entry{};
                current.isBookmark = xml.name() == u"bookmark";
                if (current.isBookmark)
                    current.path = QUrl(xml.attributes().value(QStringLiteral("href")).toString()).toLocalFile();
            } else if (start >= 0 && current.isBookmark && xml.name() == u"application"
                       && xml.attributes().value(QStringLiteral("name")) == appName) {
                current.ours = true;
                const auto attributes = xml.attributes();
                current.ourTime = parseTime(attributes.value(QStringLiteral("modified")).toString());
                if (!current.ourTime.isValid()) {
                    bool ok = false;
                    const qint64 stamp = attributes.value(QStringLiteral("timestamp")).toLongLong(&ok);
                    if (ok)
                        current.ourTime = QDateTime::fromSecsSinceEpoch(stamp, Qt::UTC);
                }
                current.ourCount = attributes.value(QStringLiteral("count")).toInt();
            }
        } else if (token == QXmlStreamReader::EndElement) {
            if (depth == 2 && start >= 0) {
                current.raw = text.mid(start, xml.characterOffset() - start);
                store.entries.push_back(current);
                start = -1;
            }
            --depth;
        }
    }
    store.damaged = xml.hasError() || !isStore;
    if (f.size() == 0)
        store.damaged = false;  // never written: nothing to repair
    return store;
}

// Replaces the store as a whole or not at all: on a full disk the earlier
// store, with every other program's entries, stays as it was.
bool writeStore(const QString& file, const Store& store)
{
    QDir().mkpath(QFileInfo(file).absolutePath());
    QString text = QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    if (!store.doctype.isEmpty())
        text += store.doctype + u'\n';
    text += store.rootTag + u'\n';
    for (const Entry& e : store.entries)
        text += QStringLiteral("  ") + e.raw + u'\n';
    text += QStringLiteral("</") + store.rootName + QStringLiteral(">\n");
    // What the operator opened is nobody else's business: a store made here
    // is private, as the desktop's own writers make it. An existing one keeps
    // its mode.
    return !AtomicWrite::write(file, text.toUtf8(), 0600);
}

QString applicationElement(const QString& when, int count)
{
    return QStringLiteral("<bookmark:application name=\"%1\" exec=\"%2\" modified=\"%3\" count=\"%4\"/>")
        .arg(escaped(appName), appExec, when)
        .arg(count);
}

// Our registration inside a bookmark element, with the space before it.
const QRegularExpression& ourApplication()
{
    static const QRegularExpression re(QStringLiteral("\\s*<[\\w.-]*:?application\\s[^>]*name=\"%1\"[^>]*/>")
                                           .arg(QRegularExpression::escape(escaped(appName))));
    return re;
}

QString mimeTypeOf(const QString& path)
{
    static QMimeDatabase mimes;
    if (path.endsWith(QStringLiteral(".brelvonic"), Qt::CaseInsensitive))
        return QStringLiteral("application/x-brelvonic-show");
    return mimes.mimeTypeForFile(path, QMimeDatabase::MatchExtension).name();
}

QString newBookmark(const QString& path, const QString& when)
{
    const QString type = mimeTypeOf(path);
    const QString href = QString::fromUtf8(QUrl::fromLocalFile(path).toEncoded());
    return QStringLiteral(
               "<bookmark href=\"%1\" added=\"%2\" modified=\"%2\" visited=\"%2\">\n"
               "    <info>\n"
               "      <metadata owner=\"http://freedesktop.org\">\n"
               "        <mime:mime-type type=\"%3\"/>\n"
               "        <bookmark:applications>\n"
               "          %4\n"
               "        </bookmark:applications>\n"
               "      </metadata>\n"
               "    </info>\n"
               "  </bookmark>")
        .arg(escaped(href), when, escaped(type), applicationElement(when, 1));
}

// Sets the bookmark's own modified/visited times in its start tag.
QString touched(QString raw, const QString& when)
{
    const qsizetype tagEnd = raw.indexOf(u'>');
    QString tag = raw.left(tagEnd);
    for (const char* attribute : {"modified", "visited"}) {
        const QRegularExpression re(QStringLiteral("\\s%1=\"[^\"]*\"").arg(QLatin1StringView(attribute)));
        const QString replacement = QStringLiteral(" %1=\"%2\"").arg(QLatin1StringView(attribute), when);
        if (tag.contains(re))
            tag.replace(re, replacement);
        else
            tag += replacement;
    }
    return tag + raw.mid(tagEnd);
}

// Adds our registration to another program's bookmark, making the list of
// applications, the desktop's metadata or the info block where it has none.
void addOurRegistration(QString& raw, const QString& path, const QString& when)
{
    const QString application = applicationElement(when, 1);
    const qsizetype list = raw.indexOf(QStringLiteral("</bookmark:applications>"));
    if (list >= 0) {
        raw.insert(list, QStringLiteral("  ") + application + QStringLiteral("\n        "));
        return;
    }
    const QString applications = QStringLiteral("<bookmark:applications>\n          ") + application
        + QStringLiteral("\n        </bookmark:applications>\n      ");
    static const QRegularExpression desktopMetadata(
        QStringLiteral("<metadata\\s[^>]*owner=\"http://freedesktop.org\"[^>]*[^/]>"));
    if (const auto open = desktopMetadata.match(raw); open.hasMatch()) {
        const qsizetype close = raw.indexOf(QStringLiteral("</metadata>"), open.capturedEnd());
        if (close >= 0) {
            raw.insert(close, QStringLiteral("  ") + applications);
            return;
        }
    }
    const QString metadata = QStringLiteral("<metadata owner=\"http://freedesktop.org\">\n        <mime:mime-type type=\"%1\"/>\n        ")
                                 .arg(escaped(mimeTypeOf(path)))
        + applications + QStringLiteral("</metadata>\n    ");
    const qsizetype info = raw.indexOf(QStringLiteral("</info>"));
    if (info >= 0) {
        raw.insert(info, QStringLiteral("  ") + metadata);
        return;
    }
    const QString block = QStringLiteral("\n    <info>\n      ") + metadata + QStringLiteral("</info>\n  ");
    if (raw.endsWith(QStringLiteral("/>"))) {
        raw.chop(2);
        raw += u'>' + block + QStringLiteral("</bookmark>");
    } else {
        raw.insert(raw.lastIndexOf(QStringLiteral("</bookmark>")), block);
    }
}

// Takes this program's registration out of a bookmark; false when the
// bookmark then holds nothing of anyone else (no other program registered,
// no title, note or foreign metadata), so it goes.
bool dropOurRegistration(Entry& e)
{
    e.raw.remove(ourApplication());
    e.ours = false;
    static const QRegularExpression anyApplication(QStringLiteral("<[\\w.-]*:?application\\s"));
    if (e.raw.contains(anyApplication))
        return true;
    // What is left when only the structure this program writes is taken away.
    static const QRegularExpression ourStructure(QStringLiteral(
        "<bookmark\\s[^>]*>|</bookmark>|<info>|</info>|<metadata\\s+owner=\"http://freedesktop.org\"\\s*>|</metadata>"
        "|<mime:mime-type\\s[^>]*/>|<bookmark:applications>|</bookmark:applications>|\\s"));
    return !QString(e.raw).remove(ourStructure).isEmpty();
}

// A damaged store lists nothing of ours; the repair that the next write makes
// keeps every readable entry of other programs and none of our registrations.
Store readForWriting(const QString& file)
{
    Store store = readStore(file);
    if (store.damaged)
        std::erase_if(store.entries, [](Entry& e) { return e.ours && !dropOurRegistration(e); });
    return store;
}

}

XbelRecentDocuments::XbelRecentDocuments()
    : storePath_(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)
                 + QStringLiteral("/recently-used.xbel"))
{
}

XbelRecentDocuments::XbelRecentDocuments(QString storePath)
    : storePath_(std::move(storePath))
{
}

void XbelRecentDocuments::note(const QString& path)
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    Store store = readForWriting(storePath_);
    if (store.tooLarge)
        return;
    auto& entries = store.entries;
    // Notes in quick succession must still sort in the order they were made.
    QDateTime now = QDateTime::currentDateTimeUtc();
    for (const Entry& e : entries)
        if (e.ours && e.ourTime.isValid() && e.ourTime >= now)
            now = e.ourTime.addMSecs(1);
    const QString when = timeText(now);
    auto it = std::find_if(entries.begin(), entries.end(), [&](const Entry& e) { return e.path == absolute; });
    if (it == entries.end()) {
        Entry entry;
        entry.raw = newBookmark(absolute, when);
        entry.path = absolute;
        entries.push_back(entry);
    } else if (it->ours) {
        it->raw.replace(ourApplication(), QStringLiteral("\n          ") + applicationElement(when, it->ourCount + 1));
        it->raw = touched(it->raw, when);
    } else {
        // Another program's item: add our registration beside theirs.
        addOurRegistration(it->raw, absolute, when);
        it->raw = touched(it->raw, when);
    }
    writeStore(storePath_, store);
}

QStringList XbelRecentDocuments::list() const
{
    Store store = readStore(storePath_);
    if (store.damaged)
        return {};
    auto& entries = store.entries;
    // Only absolute local paths: a relative or odd href in the shared store
    // must not turn into a path read from the working folder.
    std::erase_if(entries, [](const Entry& e) {
        return !e.ours || !e.path.startsWith(u'/') || e.path.contains(QChar(0));
    });
    std::stable_sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return a.ourTime > b.ourTime; });
    QStringList paths;
    for (const Entry& e : entries) {
        if (paths.size() >= maxItems)
            break;
        paths << e.path;
    }
    return paths;
}

void XbelRecentDocuments::clear()
{
    Store store = readStore(storePath_);
    if (store.tooLarge)
        return;
    bool changed = store.damaged;
    std::erase_if(store.entries, [&](Entry& e) {
        if (!e.ours)
            return false;
        changed = true;
        // Still registered by another program: keep it for them.
        return !dropOurRegistration(e);
    });
    if (changed)
        writeStore(storePath_, store);
}
