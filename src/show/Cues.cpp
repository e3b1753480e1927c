// Cues and slide notes of the current PDF: named marks on pages to jump
// between, and the operator's note per page. Both live in the set entry and
// are addressed by page index within that PDF.
#include "model/AppModel.h"

#include "l10n/L10n.h"
#include "platform/Dialogs.h"

#include <algorithm>

namespace {

bool validIndex(const std::vector<PlaylistEntry>& list, int index)
{
    return index >= 0 && index < static_cast<int>(list.size());
}

}

void AppModel::addBookmark(const QString& name, std::optional<int> page)
{
    const int index = playlistIndex.peek();
    if (!validIndex(playlist.peek(), index))
        return;
    const int target = page.value_or(pageIndex.peek());
    QString title = name.trimmed();
    if (title.isEmpty())
        title = L10n::t(QStringLiteral("slide.named"), target + 1);
    playlist.mutate([&](std::vector<PlaylistEntry>& list) {
        auto& cues = list[static_cast<std::size_t>(index)].cues;
        // One cue per page: a new one replaces what was there.
        std::erase_if(cues, [&](const CueBookmark& cue) { return cue.pageIndex == target; });
        cues.push_back(CueBookmark{QUuid::createUuid(), target, title});
        sortCuesByPage(cues);
    });
}

void AppModel::removeBookmark(const QUuid& id)
{
    const int index = playlistIndex.peek();
    if (!validIndex(playlist.peek(), index))
        return;
    playlist.mutate([&](std::vector<PlaylistEntry>& list) {
        std::erase_if(list[static_cast<std::size_t>(index)].cues,
                      [&](const CueBookmark& cue) { return cue.id == id; });
    });
}

void AppModel::promptAddBookmark()
{
    if (playlist.peek().empty() || !services_.dialogs)
        return;
    Dialogs::PromptOptions options;
    options.title = L10n::t(QStringLiteral("bookmark.on_slide"), pageIndex.peek() + 1);
    options.informativeText = L10n::t(QStringLiteral("bookmark.prompt"));
    options.placeholder = L10n::t(QStringLiteral("bookmark.placeholder"));
    options.okLabel = L10n::t(QStringLiteral("add"));
    options.cancelLabel = L10n::t(QStringLiteral("cancel"));
    if (const auto name = services_.dialogs->prompt(options))
        addBookmark(*name);
}

std::vector<CueBookmark> AppModel::currentCues() const
{
    const auto entry = currentEntry();
    if (!entry)
        return {};
    std::vector<CueBookmark> cues = entry->cues;
    sortCuesByPage(cues);
    return cues;
}

void AppModel::goToNextCue()
{
    const auto cues = currentCues();
    if (cues.empty())
        return;
    const int current = pageIndex.peek();
    const auto next = std::find_if(cues.begin(), cues.end(),
                                   [&](const CueBookmark& cue) { return cue.pageIndex > current; });
    goToPage(next != cues.end() ? next->pageIndex : cues.front().pageIndex);
}

void AppModel::goToPreviousCue()
{
    const auto cues = currentCues();
    if (cues.empty())
        return;
    const int current = pageIndex.peek();
    const auto previous = std::find_if(cues.rbegin(), cues.rend(),
                                       [&](const CueBookmark& cue) { return cue.pageIndex < current; });
    goToPage(previous != cues.rend() ? previous->pageIndex : cues.back().pageIndex);
}

void AppModel::setCurrentNote(const QString& text)
{
    const int index = playlistIndex.peek();
    if (!validIndex(playlist.peek(), index))
        return;
    const qint64 page = pageIndex.peek();
    playlist.mutate([&](std::vector<PlaylistEntry>& list) {
        auto& notes = list[static_cast<std::size_t>(index)].notesByPage;
        // An empty note is never stored; a real one keeps its spaces.
        if (text.trimmed().isEmpty())
            notes.erase(page);
        else
            notes[page] = text;
    });
}

QString AppModel::currentNote() const
{
    const auto entry = currentEntry();
    if (!entry)
        return {};
    const auto it = entry->notesByPage.find(pageIndex());
    return it == entry->notesByPage.end() ? QString() : it->second;
}
