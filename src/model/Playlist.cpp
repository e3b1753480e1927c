// The set: its entries, the document cache, loading the current entry and
// the progressive thumbnails.
#include "model/AppModel.h"

#include "l10n/L10n.h"
#include "platform/Dialogs.h"
#include "platform/RecentDocuments.h"

#include <QFileInfo>

#include <algorithm>
#include <set>

namespace {
constexpr int thumbnailBox = 320;
constexpr int thumbnailBatch = 6;
}

std::optional<PlaylistEntry> AppModel::currentEntry() const
{
    const auto& list = playlist();
    const int index = playlistIndex();
    if (index < 0 || index >= static_cast<int>(list.size()))
        return std::nullopt;
    return list[static_cast<std::size_t>(index)];
}

QString AppModel::pageKey() const
{
    const auto entry = currentEntry();
    const QString prefix = entry ? entry->id.toString(QUuid::WithoutBraces).toUpper() : QStringLiteral("none");
    return prefix + u'-' + QString::number(pageIndex());
}

int AppModel::globalPageIndex() const
{
    const auto& list = playlist();
    const int current = playlistIndex();
    int before = 0;
    for (int i = 0; i < current && i < static_cast<int>(list.size()); ++i)
        before += list[static_cast<std::size_t>(i)].pageCount;
    return before + pageIndex();
}

PdfDocumentPtr AppModel::cachedDocument(const QString& url, PdfOpenError* error)
{
    const auto& cache = documentCache.peek();
    if (auto it = cache.find(url); it != cache.end())
        return it->second;
    if (!services_.pdf)
        return nullptr;
    // File access needs no grant on this platform: nothing to start or stop.
    auto opened = services_.pdf->open(url);
    auto* document = std::get_if<PdfDocumentPtr>(&opened);
    if (!document || !*document) {
        if (auto* failure = std::get_if<PdfOpenError>(&opened); failure && error)
            *error = *failure;
        return nullptr;
    }
    documentCache.mutate([&](auto& map) { map[url] = *document; });
    return *document;
}

namespace {
// The file's name, and on a second line why it did not open where the
// engine could tell.
QString openFailureText(const QString& url, const PdfOpenError& error)
{
    const QString name = QFileInfo(url).fileName();
    const char* key = nullptr;
    switch (error.kind) {
    case PdfOpenError::Kind::password:
        key = "pdf.error.password";
        break;
    case PdfOpenError::Kind::damaged:
        key = "pdf.error.damaged";
        break;
    case PdfOpenError::Kind::notPdf:
        key = "pdf.error.not_pdf";
        break;
    case PdfOpenError::Kind::other:
        return name;
    }
    return name + u'\n' + L10n::t(QString::fromLatin1(key));
}
}

std::optional<PlaylistEntry> AppModel::makeEntry(const QString& url)
{
    PdfOpenError error;
    const PdfDocumentPtr document = cachedDocument(url, &error);
    if (!document) {
        if (services_.dialogs)
            services_.dialogs->warning(L10n::t(QStringLiteral("alert.pdf_open")), openFailureText(url, error));
        return std::nullopt;
    }
    PlaylistEntry entry;
    entry.id = QUuid::createUuid();
    entry.url = url;
    entry.title = QFileInfo(url).completeBaseName();
    entry.pageCount = document->pageCount();
    return entry;
}

namespace {
int indexOfEntry(const std::vector<PlaylistEntry>& list, const QUuid& id)
{
    const auto it = std::find_if(list.begin(), list.end(), [&](const PlaylistEntry& e) { return e.id == id; });
    return it == list.end() ? -1 : static_cast<int>(it - list.begin());
}

std::vector<PlaylistEntry> makeEntries(AppModel& model, const QStringList& urls)
{
    std::vector<PlaylistEntry> entries;
    for (const QString& url : urls) {
        if (auto entry = model.makeEntry(url))
            entries.push_back(std::move(*entry));
    }
    return entries;
}
}

void AppModel::noteRecentDocuments(const QStringList& urls)
{
    if (!services_.recents)
        return;
    for (const QString& url : urls)
        services_.recents->note(url);
    recentFiles.set(services_.recents->list());
}

void AppModel::replacePlaylist(const QStringList& urls)
{
    auto entries = makeEntries(*this, urls);
    if (entries.empty())
        return;
    playlist.set(std::move(entries));
    playlistIndex.set(0);
    showFileURL.set(std::nullopt);
    annotationUndo.set({});
    loadCurrentEntry(0, false);
    ensureTimerStarted();
    noteRecentDocuments(urls);
    syncOutput();
}

void AppModel::appendToPlaylist(const QStringList& urls)
{
    auto entries = makeEntries(*this, urls);
    if (entries.empty())
        return;
    const bool wasEmpty = playlist.peek().empty();
    playlist.mutate([&](auto& list) { list.insert(list.end(), entries.begin(), entries.end()); });
    noteRecentDocuments(urls);
    if (wasEmpty) {
        playlistIndex.set(0);
        loadCurrentEntry(0, false);
        ensureTimerStarted();
    }
    syncOutput();
}

void AppModel::loadCurrentEntry(int page, bool animate)
{
    const auto entry = currentEntry();
    if (!entry)
        return;
    const PdfDocumentPtr doc = cachedDocument(entry->url);
    if (!doc)
        return;
    document.set(doc);
    documentURL.set(entry->url);
    pageCount.set(doc->pageCount());
    pageIndex.set(std::clamp(page, 0, std::max(doc->pageCount() - 1, 0)));
    thumbnails.set({});
    rebuildThumbnails();
    previewSlideImage.set(renderSlide(PdfPage{doc, pageIndex.peek()}));
    incomingSlideImage.set(previewSlideImage.peek());
    // An animated load is part of a page move, which fades and renders ahead.
    if (animate)
        return;
    endTransition();
    prefetchUpcoming();
}

void AppModel::rebuildThumbnails()
{
    if (auto running = thumbnailTask.peek())
        running->cancel();
    const PdfDocumentPtr doc = document.peek();
    if (!doc || !services_.scheduler) {
        thumbnailTask.set(nullptr);
        return;
    }
    auto task = std::make_shared<TaskHandle>();
    thumbnailTask.set(task);
    std::weak_ptr<AppModel*> weak = self_;
    // The first batch waits for the next turn too, so loading a set returns at once.
    services_.scheduler->post([weak, doc, task] {
        auto alive = weak.lock();
        if (alive && *alive)
            (*alive)->runThumbnailBatch(weak, doc, task, 0);
    });
}

void AppModel::runThumbnailBatch(std::weak_ptr<AppModel*> model, PdfDocumentPtr doc, Task task, int from)
{
    const int count = doc->pageCount();
    for (int i = from; i < count; ++i) {
        if (task->isCancelled())
            return;
        ImagePtr image = doc->render(i, QSize(thumbnailBox, thumbnailBox));
        thumbnails.mutate([&](auto& map) {
            if (image)
                map[i] = image;
            else
                map.erase(i);
        });
        if ((i + 1) % thumbnailBatch == 0 && i + 1 < count) {
            // Give way to the console (and the clicker) before the next batch.
            services_.scheduler->post([model, doc, task, next = i + 1] {
                auto alive = model.lock();
                if (alive && *alive && !task->isCancelled())
                    (*alive)->runThumbnailBatch(model, doc, task, next);
            });
            return;
        }
    }
}

void AppModel::movePlaylist(const std::vector<int>& sourceIndices, int destination)
{
    const auto current = currentEntry();
    const auto& list = playlist.peek();
    const int count = static_cast<int>(list.size());
    std::set<int> sources;
    for (int i : sourceIndices)
        if (i >= 0 && i < count)
            sources.insert(i);
    if (sources.empty())
        return;
    destination = std::clamp(destination, 0, count);
    std::vector<PlaylistEntry> moved;
    std::vector<PlaylistEntry> rest;
    int insertAt = 0;
    for (int i = 0; i < count; ++i) {
        if (i == destination)
            insertAt = static_cast<int>(rest.size());
        if (sources.count(i))
            moved.push_back(list[static_cast<std::size_t>(i)]);
        else
            rest.push_back(list[static_cast<std::size_t>(i)]);
    }
    if (destination == count)
        insertAt = static_cast<int>(rest.size());
    rest.insert(rest.begin() + insertAt, moved.begin(), moved.end());
    playlist.set(std::move(rest));
    if (current) {
        const auto& now = playlist.peek();
        for (std::size_t i = 0; i < now.size(); ++i)
            if (now[i].id == current->id)
                playlistIndex.set(static_cast<int>(i));
    }
}

void AppModel::selectPlaylistItem(const QUuid& id)
{
    const int index = indexOfEntry(playlist.peek(), id);
    if (index < 0)
        return;
    if (index == playlistIndex.peek())
        return;
    const auto outgoing = outgoingPage();
    playlistIndex.set(index);
    loadCurrentEntry(0, true);
    finishPageMove(outgoing, true);
}

void AppModel::removePlaylistItem(const QUuid& id)
{
    const int index = indexOfEntry(playlist.peek(), id);
    if (index < 0)
        return;
    playlist.mutate([&](auto& entries) { entries.erase(entries.begin() + index); });
    if (playlist.peek().empty()) {
        closeDocument();
        return;
    }
    playlistIndex.set(std::min(static_cast<int>(playlist.peek().size()) - 1, index));
    loadCurrentEntry(0, false);
}

void AppModel::closeDocument()
{
    endTransition();
    if (auto task = thumbnailTask.peek())
        task->cancel();
    playlist.set({});
    playlistIndex.set(0);
    document.set(nullptr);
    documentURL.set(std::nullopt);
    pageCount.set(0);
    pageIndex.set(0);
    thumbnails.set({});
    incomingSlideImage.set(nullptr);
    previewSlideImage.set(nullptr);
    isFrozen.set(false);
    frozenPageIndex.set(0);
    isBlackout.set(false);
    stageTool.set(StageTool::pointer);
    laserPoint.set(std::nullopt);
    zoomCenter.set(std::nullopt);
    draftStroke.set(std::nullopt);
    draftFrameRect.set(std::nullopt);
    jumpBuffer.set(QString());
    documentCache.set({});
    showFileURL.set(std::nullopt);
    annotationUndo.set({});
    syncOutput();
}
