// Writes the first inputs of each fuzzer, made by the same writers the
// tests use: real and broken PDFs, a show file, recent-files stores,
// hand-over messages and intake texts.
#include "app/SingleInstance.h"
#include "platform/XbelRecentDocuments.h"
#include "show/SavedShow.h"
#include "support/TestPdf.h"

#include <QGuiApplication>
#include <QDir>
#include <QFile>

#include <cstdio>

namespace {
void put(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(bytes);
}

QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
}

int main(int argc, char** argv)
{
    QGuiApplication app(argc, argv);  // the PDF writer draws with fonts
    if (argc != 2) {
        std::fprintf(stderr, "usage: make-seeds FOLDER\n");
        return 2;
    }
    const QDir root(QString::fromLocal8Bit(argv[1]));
    for (const char* name : {"pdf", "show", "recents", "intake", "handover"})
        root.mkpath(QString::fromLatin1(name));
    const auto in = [&](const char* folder, const char* name) {
        return root.filePath(QString::fromLatin1(folder) + u'/' + QString::fromLatin1(name));
    };

    TestPdf::write(in("pdf", "deck.pdf"), 2, TestPdf::widescreen, QStringLiteral("seed"));
    TestPdf::writeTruncated(in("pdf", "truncated.pdf"));
    TestPdf::writeEncrypted(in("pdf", "locked.pdf"));
    TestPdf::writeCropped(in("pdf", "cropped.pdf"), 2);
    TestPdf::writeHugePageCount(in("pdf", "huge-count.pdf"));

    SavedShow show;
    // Every setting present, as a show file must have them.
    show.settings = ShowSettings{.aspect = QStringLiteral("r16x9"),
                                 .contentFit = QStringLiteral("contain"),
                                 .customWidth = 1920,
                                 .customHeight = 1080,
                                 .transitionStyle = QStringLiteral("fade"),
                                 .transitionDuration = 0.35,
                                 .plannedDuration = 2700,
                                 .hideOutputCursor = true,
                                 .markRed = 1,
                                 .markGreen = 0.2,
                                 .markBlue = 0.1};
    SavedShowItem item;
    item.path = QStringLiteral("slides/opening.pdf");
    item.bookmark = QByteArray("bookmark");
    item.cues.push_back(CueBookmark{QUuid::createUuid(), 4, QStringLiteral("Chorus")});
    item.notes = {{QStringLiteral("0"), QStringLiteral("Lights down")}, {QStringLiteral("4"), QStringLiteral("Pause")}};
    show.items.push_back(item);
    show.items.push_back(SavedShowItem{QStringLiteral("/abs/encore.pdf"), std::nullopt, {}, {}});
    put(in("show", "gig.brelvonic"), show.encode());

    // A store this program wrote, and one with another program's entry.
    const QString store = in("recents", "ours.xbel");
    XbelRecentDocuments(store).note(QStringLiteral("/shows/a.pdf"));
    XbelRecentDocuments(store).note(QStringLiteral("/shows/gig.brelvonic"));
    put(in("recents", "shared.xbel"),
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<xbel version=\"1.0\" xmlns:bookmark=\"http://www.freedesktop.org/standards/desktop-bookmarks\""
        " xmlns:mime=\"http://www.freedesktop.org/standards/shared-mime-info\">\n"
        "  <bookmark href=\"file:///home/u/notes.txt\" added=\"2024-01-01T10:00:00Z\" modified=\"2024-01-01T10:00:00Z\""
        " visited=\"2024-01-01T10:00:00Z\">\n"
        "    <info><metadata owner=\"http://freedesktop.org\"><mime:mime-type type=\"text/plain\"/>"
        "<bookmark:applications><bookmark:application name=\"Editor\" exec=\"&apos;editor %u&apos;\""
        " modified=\"2024-01-01T10:00:00Z\" count=\"3\"/></bookmark:applications></metadata></info>\n"
        "  </bookmark>\n"
        "</xbel>\n");
    (void)contents(store);

    put(in("handover", "two.msg"), SingleInstance::encode({QStringLiteral("/shows/a.pdf"), QStringLiteral("/b c/ü.pdf")}));
    put(in("handover", "none.msg"), SingleInstance::encode({}));

    put(in("intake", "url"), "file:///home/stage/Slides%20One.pdf\n");
    put(in("intake", "host"), "file://localhost/srv/deck.pdf");
    put(in("intake", "relative"), "slides/../deck.pdf");
    put(in("intake", "resource"), ":intro.pdf");
    put(in("intake", "absolute"), "  /home/stage/./deck.pdf \r\n");
    return 0;
}
