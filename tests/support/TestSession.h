#pragma once

#include "model/AppModel.h"
#include "support/FakePlatform.h"
#include "support/TestPdf.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>

// What most model tests start from: a model on fake platform services and a
// temporary folder to write PDFs and shows into.
struct TestSession {
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
