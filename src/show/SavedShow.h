#pragma once

#include "model/CueBookmark.h"
#include "model/ShowSettings.h"

#include <QByteArray>
#include <QString>

#include <map>
#include <optional>
#include <vector>

// One PDF of a saved show: where it lies, its cues and its notes as coded.
struct SavedShowItem {
    // Relative to the show's folder when the PDF lies at or below it, else absolute.
    QString path;
    // Platform file bookmark; never made on this platform, kept when read.
    std::optional<QByteArray> bookmark;
    std::vector<CueBookmark> cues;
    // Page index as decimal text → note text as typed.
    std::map<QString, QString> notes;

    bool operator==(const SavedShowItem&) const = default;

    // The coded notes from an entry's notes, and back. Reading drops names
    // that are not a plain signed decimal integer.
    static std::map<QString, QString> codedNotes(const std::map<qint64, QString>& notesByPage);
    std::map<qint64, QString> notesByPage() const;
};

// The saved form of a whole set and the settings that belong to the show.
struct SavedShow {
    qint64 formatVersion = 1;
    // All present once read: decoding fails on a missing or mistyped one.
    ShowSettings settings;
    std::vector<SavedShowItem> items;

    bool operator==(const SavedShow&) const = default;

    // Indented JSON with sorted keys: equal shows give equal bytes.
    QByteArray encode() const;
    // Strict: every required key present with its type, else none.
    static std::optional<SavedShow> decode(const QByteArray& json);
};
