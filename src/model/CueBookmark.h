#pragma once

#include <QString>
#include <QUuid>

#include <algorithm>
#include <vector>

// A named cue on one page (zero-based) of one PDF of the set.
struct CueBookmark {
    QUuid id;
    int pageIndex = 0;
    QString title;

    bool operator==(const CueBookmark&) const = default;
};

// Cues are listed by ascending page; cues of one page keep their order.
inline void sortCuesByPage(std::vector<CueBookmark>& cues)
{
    std::stable_sort(cues.begin(), cues.end(),
                     [](const CueBookmark& a, const CueBookmark& b) { return a.pageIndex < b.pageIndex; });
}
