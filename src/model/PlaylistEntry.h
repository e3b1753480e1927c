#pragma once

#include "model/CueBookmark.h"

#include <QHashFunctions>
#include <QString>
#include <QUuid>

#include <map>
#include <vector>

// One PDF of the set. `url` is the file's absolute path.
struct PlaylistEntry {
    QUuid id;
    QString url;
    QString title;
    int pageCount = 0;
    std::vector<CueBookmark> cues;
    std::map<qint64, QString> notesByPage;

    bool operator==(const PlaylistEntry&) const = default;
};

// Combines all six fields in order, so equal entries hash alike.
inline size_t qHash(const PlaylistEntry& entry, size_t seed = 0) noexcept
{
    size_t hash = qHashMulti(seed, entry.id, entry.url, entry.title, entry.pageCount);
    for (const CueBookmark& cue : entry.cues)
        hash = qHashMulti(hash, cue.id, cue.pageIndex, cue.title);
    for (const auto& [page, note] : entry.notesByPage)
        hash = qHashMulti(hash, page, note);
    return hash;
}
