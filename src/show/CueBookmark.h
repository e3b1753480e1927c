#pragma once

#include <QString>
#include <QUuid>

// A named cue on one page (zero-based) of one PDF of the set.
struct CueBookmark {
    QUuid id;
    int pageIndex = 0;
    QString title;

    bool operator==(const CueBookmark&) const = default;
};
