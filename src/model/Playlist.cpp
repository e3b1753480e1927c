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
    showOnStage(PdfPage{doc, pageIndex.peek()});
    if (!animate) {
        // A cut: a fade still running from the old picture is over once the
        // new one is there.
        showOnOutput(OutputMove::cut, nullptr);
        renderAround();
    } else if (isFrozen.peek()) {
        // Frozen, the caller starts no fade, but another file's page still
        // replaces the output picture.
        showOnOutput(OutputMove::replace, nullptr);
    }
}

// One file's thumbnails: asked of the workers a few at a time in page order,
// stored in page order whatever order they arrive in, six per turn of the
// main loop.
struct AppModel::ThumbnailPass {
    PdfDocumentPtr document;
    Task task;
    std::map<int, ImagePtr> arrived;
    std::map<int, RenderTicketPtr> tickets;
    int nextToAsk = 0;
    int nextToStore = 0;
    bool yielding = false;
};

void AppModel::stopThumbnails()
{
    if (auto running = thumbnailTask.peek())
        running->cancel();
    if (thumbnailPass_) {
        for (auto& [index, ticket] : thumbnailPass_->tickets)
            ticket->cancel();
        thumbnailPass_->tickets.clear();
        thumbnailPass_.reset();
    }
}

void AppModel::rebuildThumbnails()
{
    stopThumbnails();
    const PdfDocumentPtr doc = document.peek();
    if (!doc || !services_.scheduler) {
        thumbnailTask.set(nullptr);
        return;
    }
    auto task = std::make_shared<TaskHandle>();
    thumbnailTask.set(task);
    auto pass = std::make_shared<ThumbnailPass>();
    pass->document = doc;
    pass->task = task;
    thumbnailPass_ = pass;
    std::weak_ptr<AppModel*> weak = self_;
    // The first renders are asked for on the next turn, so loading a set returns at once.
    services_.scheduler->post([weak, pass] {
        auto alive = weak.lock();
        if (alive && *alive && !pass->task->isCancelled())
            (*alive)->askThumbnails(pass);
    });
}

void AppModel::askThumbnails(const std::shared_ptr<ThumbnailPass>& pass)
{
    // Enough in flight to keep the workers busy, few enough that a new file
    // cancels little.
    constexpr int window = 2 * thumbnailBatch;
    const int count = pass->document->pageCount();
    std::weak_ptr<AppModel*> weak = self_;
    for (; pass->nextToAsk < count && pass->nextToAsk < pass->nextToStore + window; ++pass->nextToAsk) {
        const int index = pass->nextToAsk;
        pass->tickets[index] = pass->document->request(
            index, QSize(thumbnailBox, thumbnailBox), RenderUrgency::thumbnail, [weak, pass, index](ImagePtr image) {
                auto alive = weak.lock();
                if (!alive || !*alive || pass->task->isCancelled())
                    return;
                pass->tickets.erase(index);
                pass->arrived[index] = std::move(image);
                (*alive)->storeThumbnails(pass);
            });
    }
}

void AppModel::storeThumbnails(const std::shared_ptr<ThumbnailPass>& pass)
{
    if (pass->yielding || pass->task->isCancelled())
        return;
    const int count = pass->document->pageCount();
    for (auto it = pass->arrived.find(pass->nextToStore); it != pass->arrived.end();
         it = pass->arrived.find(pass->nextToStore)) {
        const int index = it->first;
        ImagePtr image = std::move(it->second);
        pass->arrived.erase(it);
        thumbnails.mutate([&](auto& map) {
            if (image)
                map[index] = image;
            else
                map.erase(index);
        });
        ++pass->nextToStore;
        if (pass->nextToStore % thumbnailBatch == 0 && pass->nextToStore < count) {
            // Give way to the console (and the clicker) before the next batch.
            pass->yielding = true;
            askThumbnails(pass);
            std::weak_ptr<AppModel*> weak = self_;
            services_.scheduler->post([weak, pass] {
                auto alive = weak.lock();
                if (!alive || !*alive || pass->task->isCancelled())
                    return;
                pass->yielding = false;
                (*alive)->storeThumbnails(pass);
            });
            return;
        }
    }
    askThumbnails(pass);
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
    // Other files are beside the current one now.
    renderAround();
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
    stopSlideWork();
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
