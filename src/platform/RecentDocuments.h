#pragma once

#include <QString>
#include <QStringList>

// The desktop's list of recently opened files, this program's items only.
class RecentDocuments {
public:
    virtual ~RecentDocuments() = default;
    // Adds the file or moves it to the top.
    virtual void note(const QString& path) = 0;
    // Newest first.
    virtual QStringList list() const = 0;
    virtual void clear() = 0;
};
