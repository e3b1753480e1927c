// Show files: saving the set with its settings, opening it again, and finding
// the PDFs of a show that was moved.
//
// File bookmarks and sandbox access grants do not exist on this platform:
// access is always granted, saving writes no bookmark, and a bookmark read
// from a show file (one made elsewhere) cannot be resolved, so the stored path
// alone finds the PDF.
#include "model/AppModel.h"

#include "base/AtomicWrite.h"
#include "l10n/L10n.h"
#include "platform/Dialogs.h"
#include "model/ShowSettings.h"
#include "show/DocumentIntake.h"
#include "show/SavedShow.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <limits>

namespace {

const QString showExtension = QStringLiteral("brelvonic");
constexpr qint64 maxShowBytes = 64 << 20;

QString showNameFilter()
{
    return L10n::t(QStringLiteral("show.default_name")) + QStringLiteral(" (*.") + showExtension + u')';
}

QString absoluteClean(const QString& path)
{
    return QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

bool isReadableFile(const QString& path)
{
    const QFileInfo info(path);
    return info.exists() && info.isReadable();
}

// What went wrong, in the interface language where the cause is one the
// operator can act on.
QString writeFailureText(const AtomicWrite::Failure& failure)
{
    switch (failure.kind) {
    case AtomicWrite::Failure::Kind::noSpace:
        return L10n::t(QStringLiteral("error.no_space"));
    case AtomicWrite::Failure::Kind::noPermission:
        return L10n::t(QStringLiteral("error.no_permission"));
    case AtomicWrite::Failure::Kind::readOnly:
        return L10n::t(QStringLiteral("error.read_only"));
    case AtomicWrite::Failure::Kind::other:
        break;
    }
    return failure.platformText;
}

}

bool AppModel::isShowFile(const QString& path)
{
    return QFileInfo(path).suffix().compare(showExtension, Qt::CaseInsensitive) == 0;
}

QString AppModel::portablePath(const QString& file, const QString& showPath)
{
    const QString base = QDir::cleanPath(QFileInfo(showPath).absolutePath());
    const QString target = absoluteClean(file);
    // The slash belongs to the test: /Shows2/a.pdf does not lie under /Shows.
    const QString prefix = base + u'/';
    if (target.startsWith(prefix))
        return target.mid(prefix.size());
    return target;
}

std::optional<QString> AppModel::resolveShowItem(const SavedShowItem& item, const QString& showPath)
{
    // item.bookmark cannot be resolved here (see the top of this file). An
    // empty path is the show's own folder: readable, but no PDF to open.
    const QString folder = QFileInfo(showPath).absolutePath();
    const auto candidate = item.path.isEmpty() ? std::optional(folder) : DocumentIntake::localPath(item.path, folder);
    if (!candidate || !isReadableFile(*candidate))
        return std::nullopt;
    return candidate;
}

void AppModel::presentSaveShowPanel(bool saveAs)
{
    if (playlist.peek().empty()) {
        if (services_.dialogs)
            services_.dialogs->warning(L10n::t(QStringLiteral("alert.nothing_to_save")),
                                       L10n::t(QStringLiteral("alert.nothing_to_save_msg")));
        return;
    }
    const auto current = showFileURL.peek();
    if (!saveAs && current) {
        saveShow(*current);
        return;
    }
    if (!services_.dialogs)
        return;
    Dialogs::SaveOptions options;
    options.title = L10n::t(QStringLiteral("save.show"));
    options.nameFilters = {showNameFilter()};
    options.defaultSuffix = showExtension;
    if (current) {
        options.suggestedName = QFileInfo(*current).completeBaseName();
        options.directory = QFileInfo(*current).absolutePath();
    } else {
        options.suggestedName = playlist.peek().front().title;
    }
    if (options.suggestedName.isEmpty())
        options.suggestedName = L10n::t(QStringLiteral("show.default_name"));
    auto chosen = services_.dialogs->savePanel(options);
    if (!chosen || chosen->isEmpty())
        return;
    // The panel only produces show files: a name typed with another
    // extension still gets ours.
    if (!isShowFile(*chosen))
        *chosen += u'.' + showExtension;
    saveShow(*chosen);
}

void AppModel::saveShow(const QString& path)
{
    SavedShow show;
    show.formatVersion = 1;
    show.settings = showSettings();
    for (const PlaylistEntry& entry : playlist.peek()) {
        SavedShowItem item;
        item.path = portablePath(entry.url, path);
        item.cues = entry.cues;
        item.notes = SavedShowItem::codedNotes(entry.notesByPage);
        show.items.push_back(std::move(item));
    }

    // Written beside the target and renamed over it: a failure leaves any
    // earlier file as it was, and every failure is told.
    if (const auto failure = AtomicWrite::write(path, show.encode())) {
        if (services_.dialogs)
            services_.dialogs->warning(L10n::t(QStringLiteral("alert.show_save")), writeFailureText(*failure));
        return;
    }
    const QString saved = absoluteClean(path);
    showFileURL.set(saved);
    noteRecentDocuments({saved});
}

void AppModel::presentOpenShowPanel()
{
    if (!services_.dialogs)
        return;
    Dialogs::OpenOptions options;
    options.title = L10n::t(QStringLiteral("open.panel_show"));
    options.prompt = L10n::t(QStringLiteral("open"));
    options.nameFilters = {showNameFilter()};
    options.multiple = false;
    options.directories = false;
    const QStringList chosen = services_.dialogs->openPanel(options);
    if (!chosen.isEmpty())
        openShow(chosen.constFirst());
}

void AppModel::openShow(const QString& path)
{
    const QString showPath = absoluteClean(path);
    const QString fileName = QFileInfo(showPath).fileName();
    const auto alert = [this](const char* key, const QString& text) {
        if (services_.dialogs)
            services_.dialogs->warning(L10n::t(QString::fromLatin1(key)), text);
    };

    // Only a regular file: a pipe would block the console until something
    // writes to it, and a device might never end.
    QFile file(showPath);
    if (!QFileInfo(showPath).isFile() || !file.open(QIODevice::ReadOnly)) {
        alert("alert.show_read", fileName);
        return;
    }
    // Far beyond any set: not read into memory, and not a show.
    if (file.size() > maxShowBytes) {
        alert("alert.show_corrupt", fileName);
        return;
    }
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        alert("alert.show_read", fileName);
        return;
    }
    file.close();
    const auto show = SavedShow::decode(bytes);
    if (!show) {
        alert("alert.show_corrupt", fileName);
        return;
    }

    std::vector<PlaylistEntry> entries;
    QStringList missing;
    for (const SavedShowItem& item : show->items) {
        const auto resolved = resolveShowItem(item, showPath);
        if (!resolved) {
            // "gone/" is named "gone", as the last part of the path.
            missing << QFileInfo(QDir::cleanPath(item.path)).fileName();
            continue;
        }
        auto entry = makeEntry(*resolved);
        if (!entry)
            continue;
        entry->cues = item.cues;
        sortCuesByPage(entry->cues);
        entry->notesByPage = item.notesByPage();
        entries.push_back(std::move(*entry));
    }
    if (entries.empty()) {
        alert("alert.show_files_missing", missing.isEmpty() ? fileName : missing.join(u'\n'));
        return;
    }

    // Settings that the model cannot take keep their current values.
    applyShowSettings(show->settings);

    playlist.set(std::move(entries));
    playlistIndex.set(0);
    showFileURL.set(showPath);
    annotationUndo.set({});
    loadCurrentEntry(0, false);
    ensureTimerStarted();
    noteRecentDocuments({showPath});
    persistPreferences();
    syncOutput();

    if (!missing.isEmpty())
        alert("alert.pdf_missing", missing.join(u'\n'));
}
