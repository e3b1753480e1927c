// Paging through the set as one sequence, the typed jump, and freeze.
#include "model/AppModel.h"

#include "base/DecimalText.h"

#include <algorithm>
#include <limits>

bool AppModel::canGoNext() const
{
    if (!document())
        return false;
    return pageIndex() + 1 < pageCount() || playlistIndex() + 1 < static_cast<int>(playlist().size());
}

bool AppModel::canGoPrevious() const
{
    if (!document())
        return false;
    return pageIndex() > 0 || playlistIndex() > 0;
}

int AppModel::outputPageIndex() const
{
    return isFrozen() ? frozenPageIndex() : pageIndex();
}

std::optional<PdfPage> AppModel::upcomingPage()
{
    if (pageIndex() + 1 < pageCount()) {
        if (const auto& doc = document())
            return PdfPage{doc, pageIndex() + 1};
        return std::nullopt;
    }
    const auto& list = playlist();
    const int next = playlistIndex() + 1;
    if (next < static_cast<int>(list.size())) {
        if (auto doc = cachedDocument(list[static_cast<std::size_t>(next)].url))
            return PdfPage{doc, 0};
    }
    return std::nullopt;
}

std::optional<QString> AppModel::upcomingLabel() const
{
    if (pageIndex() + 1 < pageCount())
        return QString::number(pageIndex() + 2);
    if (playlistIndex() + 1 < static_cast<int>(playlist().size()))
        return QStringLiteral("1");
    return std::nullopt;
}

namespace {
// Page `index` of `doc`, or none when the document lacks it: a page held by
// the freeze may be past the end of the file the operator has moved into.
std::optional<PdfPage> pageOf(const PdfDocumentPtr& doc, int index)
{
    if (!doc || index < 0 || index >= doc->pageCount())
        return std::nullopt;
    return PdfPage{doc, index};
}
}

std::optional<PdfPage> AppModel::outgoingPage() const
{
    return pageOf(document.peek(), outputPageIndex());
}

ImagePtr AppModel::renderSlide(const PdfPage& page) const
{
    if (!page.document)
        return nullptr;
    const QSizeF size = snapshotSize();
    return page.document->render(page.index, QSize(qRound(size.width()), qRound(size.height())));
}

void AppModel::prefetchUpcoming()
{
    // The slide after this one is rendered ahead so the next press shows it at once.
    const QSizeF size = snapshotSize();
    const QSize box(qRound(size.width()), qRound(size.height()));
    if (auto next = upcomingPage())
        next->document->prefetch(next->index, box);
}

void AppModel::goToNextSlide()
{
    if (!canGoNext())
        return;
    jumpBuffer.set(QString());
    const auto outgoing = outgoingPage();
    const bool crossesFiles = pageIndex.peek() + 1 >= pageCount.peek();
    if (!crossesFiles) {
        pageIndex.mutate([](int& i) { i += 1; });
    } else {
        playlistIndex.set(playlistIndex.peek() + 1);
        loadCurrentEntry(0, true);
    }
    finishPageMove(outgoing, crossesFiles);
}

void AppModel::goToPreviousSlide()
{
    if (!canGoPrevious())
        return;
    jumpBuffer.set(QString());
    const auto outgoing = outgoingPage();
    const bool crossesFiles = pageIndex.peek() < 1;
    if (!crossesFiles) {
        pageIndex.mutate([](int& i) { i -= 1; });
    } else {
        const int previous = playlistIndex.peek() - 1;
        const int landing = std::max(playlist.peek()[static_cast<std::size_t>(previous)].pageCount - 1, 0);
        playlistIndex.set(previous);
        loadCurrentEntry(landing, true);
    }
    finishPageMove(outgoing, crossesFiles);
}

void AppModel::goToPage(int index)
{
    if (!document.peek())
        return;
    jumpBuffer.set(QString());
    const int target = std::clamp(index, 0, std::max(pageCount.peek() - 1, 0));
    if (target == pageIndex.peek())
        return;
    const auto outgoing = outgoingPage();
    pageIndex.set(target);
    finishPageMove(outgoing);
}

void AppModel::finishPageMove(const std::optional<PdfPage>& outgoing, bool entryLoaded)
{
    // One render serves the stage and the output; a move into another file
    // has it from loading that file.
    if (!entryLoaded)
        previewSlideImage.set(renderSlide(PdfPage{document.peek(), pageIndex.peek()}));
    const ImagePtr slide = previewSlideImage.peek();
    draftStroke.set(std::nullopt);
    draftFrameRect.set(std::nullopt);
    if (stageTool.peek() != StageTool::zoom)
        zoomCenter.set(std::nullopt);
    if (!isFrozen.peek())
        startTransition(outgoing, slide);
    prefetchUpcoming();
}

void AppModel::toggleFreeze()
{
    if (!isFrozen.peek()) {
        frozenPageIndex.set(pageIndex.peek());
        isFrozen.set(true);
        return;
    }
    isFrozen.set(false);
    if (pageIndex.peek() != frozenPageIndex.peek())
        startTransition(pageOf(document.peek(), frozenPageIndex.peek()),
                        renderSlide(PdfPage{document.peek(), pageIndex.peek()}));
}

void AppModel::appendJumpDigit(const QString& digit)
{
    if (!document.peek())
        return;
    if (jumpBuffer.peek().size() >= 4)
        jumpBuffer.set(QString());
    jumpBuffer.mutate([&](QString& buffer) { buffer += digit; });
}

void AppModel::toggleBlackout()
{
    isBlackout.mutate([](bool& on) { on = !on; });
}

void AppModel::clearJumpBuffer()
{
    jumpBuffer.set(QString());
}

void AppModel::removeLastJumpDigit()
{
    if (!jumpBuffer.peek().isEmpty())
        jumpBuffer.mutate([](QString& buffer) { buffer.chop(1); });
}

void AppModel::commitJump()
{
    if (jumpBuffer.peek().isEmpty()) {
        jumpBuffer.set(QString());
        return;
    }
    const auto number = DecimalText::parseInt64(jumpBuffer.peek());
    if (!number) {
        jumpBuffer.set(QString());
        return;
    }
    // goToPage clamps; only keep the arithmetic inside int.
    const qint64 number1 = std::clamp<qint64>(*number, qint64(std::numeric_limits<int>::min()) + 1,
                                              qint64(std::numeric_limits<int>::max()) + 1);
    goToPage(static_cast<int>(number1 - 1));
}
