// Slide pictures come from the engine's workers, never from the main thread:
// the stage and the output change when the new page's picture is ready (at
// once when it was rendered ahead), and what the operator may ask for next is
// rendered ahead while the files far from the position let go of their memory.
#include "model/AppModel.h"

#include "base/DecimalText.h"

#include <algorithm>
#include <set>

QSize AppModel::slideBox() const
{
    const QSizeF size = snapshotSize();
    return QSize(qRound(size.width()), qRound(size.height()));
}

bool AppModel::isAwaitingSlide() const
{
    return stageWaitsFor_ || outputWaitsFor_;
}

void AppModel::showOnStage(const PdfPage& page)
{
    stageWaitsFor_.reset();
    if (!page.document) {
        previewSlideImage.set(nullptr);
        dropUnwantedSlides();
        return;
    }
    if (auto picture = page.document->cached(page.index, slideBox())) {
        previewSlideImage.set(std::move(picture));
        dropUnwantedSlides();
        return;
    }
    // Until the slide is ready the stage shows its thumbnail, when the strip has it.
    if (page.document == document.peek()) {
        const auto& strip = thumbnails.peek();
        if (auto it = strip.find(page.index); it != strip.end())
            previewSlideImage.set(it->second);
    }
    stageWaitsFor_ = page;
    askForSlide(page);
    dropUnwantedSlides();
}

void AppModel::showOnOutput(OutputMove move, ImagePtr from)
{
    outputWaitsFor_.reset();
    const PdfPage page{document.peek(), pageIndex.peek()};
    ImagePtr picture = page.document ? page.document->cached(page.index, slideBox()) : nullptr;
    if (!page.document || picture) {
        applyOutputPicture(std::move(picture), move, std::move(from));
        dropUnwantedSlides();
        return;
    }
    // The output keeps what it shows (never a stand-in, never black) until
    // the slide is ready; then it fades or cuts as it would have at once.
    outputWaitsFor_ = OutputWait{page, move, std::move(from)};
    askForSlide(page);
    dropUnwantedSlides();
}

void AppModel::askForSlide(const PdfPage& page)
{
    for (const auto& [asked, ticket] : slideTickets_)
        if (asked == page)
            return;
    std::weak_ptr<AppModel*> weak = self_;
    slideTickets_.emplace_back(page, page.document->request(page.index, slideBox(), RenderUrgency::shown,
                                                            [weak, page](ImagePtr picture) {
                                                                auto alive = weak.lock();
                                                                if (alive && *alive)
                                                                    (*alive)->slideArrived(page, std::move(picture));
                                                            }));
}

void AppModel::slideArrived(const PdfPage& page, ImagePtr picture)
{
    std::erase_if(slideTickets_, [&](const auto& entry) { return entry.first == page; });
    if (stageWaitsFor_ == page) {
        stageWaitsFor_.reset();
        previewSlideImage.set(picture);
    }
    if (outputWaitsFor_ && outputWaitsFor_->page == page) {
        OutputWait wait = std::move(*outputWaitsFor_);
        outputWaitsFor_.reset();
        applyOutputPicture(std::move(picture), wait.move, std::move(wait.from));
    }
}

void AppModel::dropUnwantedSlides()
{
    std::erase_if(slideTickets_, [&](auto& entry) {
        const bool wanted = stageWaitsFor_ == entry.first || (outputWaitsFor_ && outputWaitsFor_->page == entry.first);
        if (!wanted)
            entry.second->cancel();
        return !wanted;
    });
}

ImagePtr AppModel::pictureLeaving(const std::optional<PdfPage>& page) const
{
    if (!page || !page->document)
        return nullptr;
    // While the output still waits for a slide it shows the one before:
    // that is what it fades out of.
    if (outputWaitsFor_)
        return incomingSlideImage.peek();
    if (auto picture = page->document->cached(page->index, slideBox()))
        return picture;
    return incomingSlideImage.peek();
}

void AppModel::renderAround()
{
    const auto& list = playlist.peek();
    const int current = playlistIndex.peek();
    const auto entryAt = [&](int i) -> const PlaylistEntry* {
        return i >= 0 && i < static_cast<int>(list.size()) ? &list[static_cast<std::size_t>(i)] : nullptr;
    };

    // The current file and its neighbours keep what they have parsed and
    // rendered; every other file may let go of it.
    std::set<QString> near;
    for (int i = current - 1; i <= current + 1; ++i)
        if (const auto* entry = entryAt(i))
            near.insert(entry->url);
    for (const auto& [url, doc] : documentCache.peek())
        doc->setNear(near.count(url) > 0);

    std::vector<AheadRender> tickets;
    const PdfDocumentPtr doc = document.peek();
    if (doc) {
        const QSize box = slideBox();
        const auto ask = [&](const PdfDocumentPtr& d, int index, RenderUrgency urgency) {
            if (!d || index < 0 || index >= d->pageCount())
                return;
            const PdfPage page{d, index};
            const auto same = [&](const AheadRender& r) { return r.page == page && r.urgency == urgency; };
            if (std::any_of(tickets.begin(), tickets.end(), same))
                return;
            // Still under way from an earlier position: it carries on.
            auto running = std::find_if(aheadTickets_.begin(), aheadTickets_.end(), [&](const AheadRender& r) {
                return r.ticket && same(r) && !*r.finished;
            });
            if (running != aheadTickets_.end()) {
                tickets.push_back(std::move(*running));
                running->ticket.reset();
                return;
            }
            if (d->cached(index, box))
                return;
            auto finished = std::make_shared<bool>(false);
            tickets.push_back(AheadRender{page, urgency,
                                          d->request(index, box, urgency, [finished](ImagePtr) { *finished = true; }),
                                          finished});
        };
        const int page = pageIndex.peek();
        const int last = std::max(pageCount.peek() - 1, 0);
        // The page a number being typed names, before Enter.
        if (const auto typed = DecimalText::parseInt64(jumpBuffer.peek()))
            ask(doc, static_cast<int>(std::clamp<qint64>(*typed - 1, 0, last)), RenderUrgency::imminent);
        // Across file boundaries too: the files of the set are all open already.
        const auto opened = [&](const PlaylistEntry* entry) -> PdfDocumentPtr {
            if (!entry)
                return nullptr;
            const auto it = documentCache.peek().find(entry->url);
            return it == documentCache.peek().end() ? nullptr : it->second;
        };
        if (page < last)
            ask(doc, page + 1, RenderUrgency::ahead);
        else
            ask(opened(entryAt(current + 1)), 0, RenderUrgency::ahead);
        if (page > 0)
            ask(doc, page - 1, RenderUrgency::ahead);
        else if (const auto* previous = entryAt(current - 1))
            ask(opened(previous), std::max(previous->pageCount - 1, 0), RenderUrgency::ahead);
        // Where the cue commands would land from here.
        if (const auto* entry = entryAt(current); entry && !entry->cues.empty()) {
            int after = -1;
            int before = -1;
            for (const auto& cue : entry->cues) {
                if (cue.pageIndex > page && (after < 0 || cue.pageIndex < after))
                    after = cue.pageIndex;
                if (cue.pageIndex < page && cue.pageIndex > before)
                    before = cue.pageIndex;
            }
            const auto [first, lastCue] = std::minmax_element(
                entry->cues.begin(), entry->cues.end(),
                [](const CueBookmark& a, const CueBookmark& b) { return a.pageIndex < b.pageIndex; });
            ask(doc, after >= 0 ? after : first->pageIndex, RenderUrgency::ahead);
            ask(doc, before >= 0 ? before : lastCue->pageIndex, RenderUrgency::ahead);
        }
        // Last, two pages forward: a heavy page then has the time of two
        // presses to get ready.
        if (page + 1 < last) {
            ask(doc, page + 2, RenderUrgency::ahead);
        } else if (const auto* following = entryAt(current + 1)) {
            // The second page forward is the next file's first or second.
            const int into = page + 2 - (last + 1);
            if (into < following->pageCount)
                ask(opened(following), into, RenderUrgency::ahead);
        }
    }
    // What is no longer wanted from here stops.
    for (auto& render : aheadTickets_)
        if (render.ticket)
            render.ticket->cancel();
    aheadTickets_ = std::move(tickets);
}

void AppModel::stopSlideWork()
{
    stageWaitsFor_.reset();
    outputWaitsFor_.reset();
    dropUnwantedSlides();
    for (auto& render : aheadTickets_)
        if (render.ticket)
            render.ticket->cancel();
    aheadTickets_.clear();
    stopThumbnails();
}
