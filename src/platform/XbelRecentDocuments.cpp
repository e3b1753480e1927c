#include "XbelRecentDocuments.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QRegularExpression>
#include <QSaveFile>
#include <QStandardPaths>
#include <QUrl>
#include <QXmlStreamReader>

#include <algorithm>

namespace {

const QString appName = QStringLiteral("PDF Brelvonic");
const QString appExec = QStringLiteral("&apos;pdf-brelvonic %u&apos;");

// One <bookmark> element as it stands in the file, kept verbatim.
struct Entry {
    QString raw;
    QString path;
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

// Reads every complete bookmark; a damaged tail is dropped, the rest kept.
std::vector<Entry> readStore(const QString& file)
{
    std::vector<Entry> entries;
    QFile f(file);
    if (!f.open(QIODevice::ReadOnly))
        return entries;
    const QString text = QString::fromUtf8(f.readAll());
    QXmlStreamReader xml(text);
    Entry current;
    qsizetype start = -1;
    int depth = 0;
    while (!xml.atEnd() && !xml.hasError()) {
        const auto token = xml.readNext();
        if (token == QXmlStreamReader::StartElement) {
            ++depth;
            if (depth == 2 && xml.name() == u"bookmark") {
                // The offset is just past the start tag; its '<' is the last one before.
                start = text.lastIndexOf(u'<', xml.characterOffset() - 1);
                current = Entry{};
                current.path = QUrl(xml.attributes().value(QStringLiteral("href")).toString()).toLocalFile();
            } else if (start >= 0 && xml.name() == u"application"
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
            if (depth == 2 && start >= 0 && xml.name() == u"bookmark") {
                current.raw = text.mid(start, xml.characterOffset() - start);
                entries.push_back(current);
                start = -1;
            }
            --depth;
        }
    }
    return entries;
}

bool writeStore(const QString& file, const std::vector<Entry>& entries)
{
    QDir().mkpath(QFileInfo(file).absolutePath());
    QSaveFile out(file);
    if (!out.open(QIODevice::WriteOnly))
        return false;
    QString text = QStringLiteral(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<xbel version=\"1.0\"\n"
        "      xmlns:bookmark=\"http://www.freedesktop.org/standards/desktop-bookmarks\"\n"
        "      xmlns:mime=\"http://www.freedesktop.org/standards/shared-mime-info\"\n"
        ">\n");
    for (const Entry& e : entries)
        text += QStringLiteral("  ") + e.raw + u'\n';
    text += QStringLiteral("</xbel>\n");
    out.write(text.toUtf8());
    return out.commit();
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

QString newBookmark(const QString& path, const QString& when)
{
    static QMimeDatabase mimes;
    QString type = mimes.mimeTypeForFile(path, QMimeDatabase::MatchExtension).name();
    if (path.endsWith(QStringLiteral(".brelvonic"), Qt::CaseInsensitive))
        type = QStringLiteral("application/x-brelvonic-show");
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
    std::vector<Entry> entries = readStore(storePath_);
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
        const qsizetype close = it->raw.indexOf(QStringLiteral("</bookmark:applications>"));
        if (close < 0)
            return;
        it->raw.insert(close, QStringLiteral("  ") + applicationElement(when, 1) + QStringLiteral("\n        "));
        it->raw = touched(it->raw, when);
    }
    writeStore(storePath_, entries);
}

QStringList XbelRecentDocuments::list() const
{
    std::vector<Entry> entries = readStore(storePath_);
    std::erase_if(entries, [](const Entry& e) { return !e.ours || e.path.isEmpty(); });
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
    std::vector<Entry> entries = readStore(storePath_);
    std::vector<Entry> kept;
    bool changed = false;
    for (Entry& e : entries) {
        if (!e.ours) {
            kept.push_back(e);
            continue;
        }
        changed = true;
        e.raw.remove(ourApplication());
        // Still registered by another program: keep it for them.
        if (e.raw.contains(QRegularExpression(QStringLiteral("<[\\w.-]*:?application\\s"))))
            kept.push_back(e);
    }
    if (changed)
        writeStore(storePath_, kept);
}
