#include "model/AppModel.h"

#include <algorithm>

namespace {
// The history spans all pages and tools; older records fall out.
constexpr std::size_t undoLimit = 40;

template <typename T>
void removeById(std::map<QString, std::vector<T>>& byPage, const QString& key, const QUuid& id)
{
    const auto it = byPage.find(key);
    if (it == byPage.end())
        return;
    auto& list = it->second;
    list.erase(std::remove_if(list.begin(), list.end(), [&](const T& item) { return item.id == id; }), list.end());
}
}

void AppModel::pushUndo(AnnotationUndo record)
{
    annotationUndo.mutate([&](std::vector<AnnotationUndo>& history) {
        history.push_back(std::move(record));
        if (history.size() > undoLimit)
            history.erase(history.begin(), history.begin() + static_cast<std::ptrdiff_t>(history.size() - undoLimit));
    });
}

void AppModel::undoAnnotation()
{
    if (annotationUndo.peek().empty())
        return;
    AnnotationUndo record = annotationUndo.peek().back();
    annotationUndo.mutate([](std::vector<AnnotationUndo>& history) { history.pop_back(); });

    // The record's page need not be on screen: change its markup, never navigate.
    if (const auto* added = std::get_if<AnnotationUndoRecord::AddedStroke>(&record)) {
        if (strokesByPage.peek().count(added->pageKey))
            strokesByPage.mutate([&](auto& byPage) { removeById(byPage, added->pageKey, added->id); });
    } else if (const auto* added = std::get_if<AnnotationUndoRecord::AddedFrame>(&record)) {
        if (framesByPage.peek().count(added->pageKey))
            framesByPage.mutate([&](auto& byPage) { removeById(byPage, added->pageKey, added->id); });
    } else if (const auto* cleared = std::get_if<AnnotationUndoRecord::Cleared>(&record)) {
        strokesByPage.mutate([&](auto& byPage) { byPage[cleared->pageKey] = cleared->strokes; });
        framesByPage.mutate([&](auto& byPage) { byPage[cleared->pageKey] = cleared->frames; });
    }
}

void AppModel::clearAnnotations()
{
    const QString key = pageKey();
    std::vector<Stroke> strokes;
    std::vector<FrameRect> frames;
    if (const auto it = strokesByPage.peek().find(key); it != strokesByPage.peek().end())
        strokes = it->second;
    if (const auto it = framesByPage.peek().find(key); it != framesByPage.peek().end())
        frames = it->second;
    if (!strokes.empty() || !frames.empty()) {
        pushUndo(AnnotationUndoRecord::Cleared{key, std::move(strokes), std::move(frames)});
        strokesByPage.mutate([&](auto& byPage) { byPage[key].clear(); });
        framesByPage.mutate([&](auto& byPage) { byPage[key].clear(); });
    }
    // A clear in the middle of a drag also drops the unfinished mark.
    draftStroke.set(std::nullopt);
    draftFrameRect.set(std::nullopt);
}

void AppModel::chooseMarkColor(const MarkColor& color)
{
    markColor.set(color);
    persistPreferences();
}
