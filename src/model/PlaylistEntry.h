#pragma once

#include "show/CueBookmark.h"

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
