// Everything that brings PDFs into the set: the open panels, a folder's PDFs,
// and the files of a drop, the command line or another launch.
#include "show/DocumentIntake.h"

#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "platform/Dialogs.h"

#include <QCollator>
#include <QDir>
#include <QFileInfo>
#include <QMimeData>
#include <QStringDecoder>
#include <QUrl>

#include <algorithm>

namespace {

bool isPdfName(const QString& path)
{
    return QFileInfo(path).suffix().compare(QLatin1String("pdf"), Qt::CaseInsensitive) == 0;
}

// The local path of a file URL, none for any other URL and for a file URL
// whose path is not absolute ("file:o"). A host name ("localhost", or the
// machine's name as drag protocols write it) is not part of the path;
// QUrl::toLocalFile would make it "//host/…", a network share.
std::optional<QString> filePathOf(const QUrl& url)
{
    if (!url.isValid() || !url.isLocalFile())
        return std::nullopt;
    return DocumentIntake::localPath(url.path(QUrl::FullyDecoded), {});
}

// The path of a "file:" URL as text, when it is one; a relative one
// ("file:slides.pdf", as a shell completes it) is taken from `base`, or
// refused without one.
std::optional<std::optional<QString>> fileURLText(const QString& text, const QString& base = {})
{
    if (!text.startsWith(QLatin1String("file:"), Qt::CaseInsensitive))
        return std::nullopt;
    const QUrl url(text, QUrl::StrictMode);
    if (!url.isValid() || !url.isLocalFile())
        return std::optional<QString>{};
    return DocumentIntake::localPath(url.path(QUrl::FullyDecoded), base);
}

// The PDFs chosen in an open panel, none when cancelled.
QStringList choosePdfs(Dialogs* dialogs, const char* title, const char* prompt)
{
    if (!dialogs)
        return {};
    Dialogs::OpenOptions options;
    options.title = L10n::t(QString::fromLatin1(title));
    options.prompt = L10n::t(QString::fromLatin1(prompt));
    options.nameFilters = {QStringLiteral("PDF (*.pdf *.PDF *.Pdf)")};
    options.multiple = true;
    return dialogs->openPanel(options);
}

// The order a file manager shows: numbers by value, case ignored. The C
// locale compares code points and ignores the numeric mode, so a machine
// without a chosen locale sorts as English.
QCollator nameCollator()
{
    QLocale locale;
    if (locale.language() == QLocale::C)
        locale = QLocale(QLocale::English);
    QCollator collator(locale);
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator;
}

}

namespace DocumentIntake {

std::optional<QString> localPath(const QString& text, const QString& base)
{
    // No file name holds a NUL: the system would read a different, shorter
    // path. Text is never handed to QFileInfo or QDir as it stands: they
    // take ":name" for a resource compiled into the program.
    if (text.isEmpty() || text.contains(QChar(0)))
        return std::nullopt;
    QString path = text;
    if (!path.startsWith(u'/')) {
        if (!base.startsWith(u'/') || base.contains(QChar(0)))
            return std::nullopt;
        path = base + u'/' + text;
    }
    return QDir::cleanPath(path);
}

std::optional<QString> parse(const QString& text)
{
    const QString trimmed = text.trimmed();
    if (auto path = fileURLText(trimmed))
        return *path;
    if (trimmed.startsWith(u'/'))
        return localPath(trimmed, {});
    return std::nullopt;
}

std::optional<QString> parse(const QByteArray& data)
{
    if (auto path = filePathOf(QUrl::fromEncoded(data, QUrl::StrictMode)))
        return path;
    QStringDecoder decoder(QStringDecoder::Utf8);
    QString text = decoder.decode(data);
    if (decoder.hasError())
        return std::nullopt;
    // Trim white space, line breaks and control characters at both ends.
    const auto unwanted = [](QChar c) { return c.isSpace() || c.category() == QChar::Other_Control; };
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && unwanted(text.at(begin)))
        ++begin;
    while (end > begin && unwanted(text.at(end - 1)))
        --end;
    text = text.mid(begin, end - begin);
    if (text.isEmpty())
        return std::nullopt;
    if (auto path = fileURLText(text))
        return *path;
    return localPath(text, QDir::currentPath());
}

QStringList fileURLs(const QMimeData* mime)
{
    QStringList paths;
    if (!mime)
        return paths;
    for (const QUrl& url : mime->urls()) {
        if (auto path = filePathOf(url))
            paths << *path;
    }
    if (paths.isEmpty() && mime->hasText()) {
        if (auto path = parse(mime->text()))
            paths << *path;
    }
    return paths;
}

QStringList argumentPaths(const QStringList& arguments, const QString& workingDirectory)
{
    QStringList paths;
    const QString base = QDir::cleanPath(workingDirectory);
    for (const QString& argument : arguments) {
        auto path = fileURLText(argument, base);
        if (!path)
            path = localPath(argument, base);
        if (*path)
            paths << **path;
    }
    return paths;
}

}

void AppModel::presentOpenPanel()
{
    if (const QStringList files = choosePdfs(services_.dialogs.get(), "open.pdf", "open"); !files.isEmpty())
        replacePlaylist(files);
}

void AppModel::presentAddToPlaylistPanel()
{
    if (const QStringList files = choosePdfs(services_.dialogs.get(), "add.to_set", "add"); !files.isEmpty())
        appendToPlaylist(files);
}

void AppModel::presentFolderPanel()
{
    if (!services_.dialogs)
        return;
    Dialogs::OpenOptions options;
    options.title = L10n::t(QStringLiteral("open.folder_pdf"));
    options.prompt = L10n::t(QStringLiteral("open"));
    options.directories = true;
    const QStringList chosen = services_.dialogs->openPanel(options);
    if (chosen.isEmpty())
        return;
    const QString folder = QDir::cleanPath(chosen.constFirst());
    const QStringList files = pdfs(folder);
    if (files.isEmpty()) {
        services_.dialogs->warning(L10n::t(QStringLiteral("alert.folder_empty")), QFileInfo(folder).fileName());
        return;
    }
    replacePlaylist(files);
}

QStringList AppModel::pdfs(const QString& folder)
{
    // File access needs no grant on this platform: nothing to start or stop.
    // Without QDir::Hidden the listing skips hidden files; an unreadable
    // folder lists nothing. A folder named x.pdf counts: only the name is tested.
    const QFileInfoList entries = QDir(folder).entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot);
    QFileInfoList kept;
    std::copy_if(entries.begin(), entries.end(), std::back_inserter(kept),
                 [](const QFileInfo& info) { return isPdfName(info.fileName()); });
    const QCollator collator = nameCollator();
    std::stable_sort(kept.begin(), kept.end(), [&](const QFileInfo& a, const QFileInfo& b) {
        return collator.compare(a.fileName(), b.fileName()) < 0;
    });
    QStringList files;
    for (const QFileInfo& info : kept)
        files << QDir::cleanPath(info.absoluteFilePath());
    return files;
}

void AppModel::ingestDroppedURLs(const QStringList& paths)
{
    // Only absolute paths name a file here: whose working folder would a
    // relative one mean?
    QStringList standardized;
    for (const QString& path : paths) {
        if (auto clean = DocumentIntake::localPath(path, {}))
            standardized << *clean;
    }
    // A show file wins: everything else in the same drop is ignored.
    for (const QString& path : standardized) {
        if (isShowFile(path)) {
            openShow(path);
            return;
        }
    }
    QStringList files;
    for (const QString& path : standardized) {
        const QFileInfo info(path);
        if (info.exists() && info.isDir())
            files << pdfs(path);
        else if (isPdfName(path))
            files << path;
    }
    if (files.isEmpty())
        return;
    if (playlist.peek().empty())
        replacePlaylist(files);
    else
        appendToPlaylist(files);
}

void AppModel::openRecentFile(const QString& path)
{
    if (isShowFile(path))
        openShow(path);
    else
        replacePlaylist({path});
}
