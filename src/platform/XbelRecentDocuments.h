#pragma once

#include "platform/RecentDocuments.h"

// The desktop's shared recent-files store (recently-used.xbel), which file
// managers and other programs read and write too. Only this program's
// registrations are touched; every other program's entries are kept as
// they were written.
class XbelRecentDocuments final : public RecentDocuments {
public:
    // The store of this user: $XDG_DATA_HOME/recently-used.xbel.
    XbelRecentDocuments();
    explicit XbelRecentDocuments(QString storePath);

    void note(const QString& path) override;
    QStringList list() const override;
    void clear() override;

    static constexpr int maxItems = 10;

private:
    QString storePath_;
};
