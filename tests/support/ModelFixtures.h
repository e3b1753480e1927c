#pragma once

#include "model/AppModel.h"
#include "support/FakePlatform.h"
#include "support/TestPdf.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>

// The two setups model tests start from, unpacked in one line:
//     auto&& [platform, model] = ModelOnFakes();
//     auto&& [folder, platform, model] = ModelWithFolder();

// A model on fake platform services (the PDF engine is real).
struct ModelOnFakes {
    FakePlatform platform;
    AppModel model{platform.services()};
};

// The same, with a temporary folder to write PDFs and shows into.
struct ModelWithFolder {
    TestFolder folder;
    FakePlatform platform;
    AppModel model{platform.services()};

    QString file(const QString& relative) const { return folder.file(relative); }
    // Writes a PDF at `relative`, making the folders on the way.
    QString pdf(const QString& relative, int pages = 3)
    {
        QDir().mkpath(QFileInfo(folder.file(relative)).absolutePath());
        return folder.pdf(relative, pages);
    }

    // The alerts shown so far, each as "title: text".
    QStringList alerts() const
    {
        QStringList out;
        for (const auto& alert : platform.dialogs->alerts)
            out << alert.title + QStringLiteral(": ") + alert.text;
        return out;
    }
    // The set's files, as paths and as file names.
    QStringList paths() const
    {
        QStringList out;
        for (const auto& entry : model.playlist())
            out << entry.url;
        return out;
    }
    QStringList names() const { return fileNames(paths()); }

    static QStringList fileNames(const QStringList& paths)
    {
        QStringList out;
        for (const QString& path : paths)
            out << QFileInfo(path).fileName();
        return out;
    }
};

// Where the operator stands, for one comparison: "entry:page/pages".
inline QString position(const AppModel& model)
{
    return QStringLiteral("%1:%2/%3").arg(model.playlistIndex()).arg(model.pageIndex()).arg(model.pageCount());
}

// What `byPage` (strokesByPage or framesByPage) holds for page `key`; none
// when the page has no marks.
template <typename ByPage>
const auto& marksOn(const ByPage& byPage, const QString& key)
{
    static const typename std::decay_t<decltype(byPage.peek())>::mapped_type none;
    const auto it = byPage.peek().find(key);
    return it == byPage.peek().end() ? none : it->second;
}
