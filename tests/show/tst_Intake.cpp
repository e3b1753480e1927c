#include "l10n/L10n.h"
#include "show/DocumentIntake.h"
#include "support/ModelFixtures.h"

#include <QDir>
#include <QFile>
#include <QMimeData>
#include <QUrl>
#include <QtTest>

namespace {

void writeText(const QString& path, const QByteArray& text = "not a slide")
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(text);
}

// a.pdf, a folder "deck" holding Slide 10.pdf, Slide 2.pdf and .hidden.pdf,
// and notes.txt: the drop that every drop test starts from, with a model.
struct DropFixture : ModelWithFolder {
    QString a = pdf("a.pdf", 2);
    QString deck = file("deck");
    QString notes = file("notes.txt");

    DropFixture()
    {
        for (const char* name : {"Slide 10.pdf", "Slide 2.pdf", ".hidden.pdf"})
            pdf(QString("deck/") + name, 1);
        writeText(notes);
    }
    QStringList drop() const { return {a, deck, notes}; }
};

// A show of song.pdf (two pages) saved by another model.
QString savedShow(DropFixture& fixture, const QString& name)
{
    ModelWithFolder other;
    other.model.replacePlaylist({fixture.pdf("song.pdf", 2)});
    other.model.saveShow(fixture.file(name));
    return other.alerts().isEmpty() ? fixture.file(name) : QString();
}

}

class IntakeTest : public QObject {
    Q_OBJECT

private slots:
    void folderListingKeepsDirectPdfsInNaturalOrder()
    {
        TestFolder folder;
        for (const char* name : {"Slide 10.pdf", "Slide 2.pdf", "slide 3.PDF", "alpha.Pdf", ".hidden.pdf", "readme.txt", "pdf"})
            writeText(folder.file(QString::fromUtf8(name)));
        QDir().mkpath(folder.file("inner"));
        writeText(folder.file("inner/Slide 1.pdf"));
        // Only the name is tested: a folder called like a PDF counts.
        QDir().mkpath(folder.file("Slide 4.pdf"));

        const QStringList found = AppModel::pdfs(folder.path());
        QCOMPARE(ModelWithFolder::fileNames(found), (QStringList{"alpha.Pdf", "Slide 2.pdf", "slide 3.PDF", "Slide 4.pdf", "Slide 10.pdf"}));
        QCOMPARE(found.constFirst(), QDir::cleanPath(folder.file("alpha.Pdf")));

        QVERIFY(AppModel::pdfs(folder.file("missing")).isEmpty());
        QVERIFY(AppModel::pdfs(folder.file("readme.txt")).isEmpty());
    }

    void dropOntoAnEmptySetMakesTheSetInDropOrder()
    {
        DropFixture f;
        f.model.ingestDroppedURLs(f.drop());
        QCOMPARE(f.names(), (QStringList{"a.pdf", "Slide 2.pdf", "Slide 10.pdf"}));
        QCOMPARE(f.model.playlistIndex(), 0);
        QCOMPARE(f.model.documentURL(), std::optional<QString>(f.a));
        QVERIFY(f.alerts().isEmpty());
    }

    void dropOntoALoadedSetAppendsAndKeepsTheCurrentSlide()
    {
        DropFixture f;
        f.model.replacePlaylist({f.pdf("first.pdf", 3)});
        f.model.goToPage(2);
        // Paths as a drop may carry them: with "." and ".." parts.
        f.model.ingestDroppedURLs({f.folder.path() + "/./a.pdf", f.folder.path() + "/deck/../deck/.", f.notes});
        QCOMPARE(f.names(), (QStringList{"first.pdf", "a.pdf", "Slide 2.pdf", "Slide 10.pdf"}));
        QCOMPARE(f.model.playlist()[1].url, f.a);
        QCOMPARE(f.model.playlistIndex(), 0);
        QCOMPARE(f.model.pageIndex(), 2);
    }

    void dropsWithoutPdfsChangeNothingSilently()
    {
        ModelWithFolder s;
        writeText(s.file("notes.txt"));
        QDir().mkpath(s.file("empty"));
        s.model.ingestDroppedURLs({s.file("notes.txt"), s.file("empty"), QString()});
        s.model.ingestDroppedURLs({});
        QVERIFY(s.model.playlist().empty());
        QVERIFY(!s.model.document());
        QVERIFY(s.alerts().isEmpty());
    }

    void aShowFileInADropWinsOverEverythingElse()
    {
        DropFixture f;
        const QString show = savedShow(f, "gig.BRELVONIC");
        QVERIFY(!show.isEmpty());
        f.model.ingestDroppedURLs({f.a, show, f.deck});
        QCOMPARE(f.names(), QStringList{"song.pdf"});
        QCOMPARE(f.model.showFileURL(), std::optional<QString>(show));

        // Also onto a loaded set: the show replaces it, nothing is appended.
        f.model.replacePlaylist({f.a});
        f.model.ingestDroppedURLs({f.deck, show});
        QCOMPARE(f.names(), QStringList{"song.pdf"});
    }

    // A recent show opens as a show; a recent PDF replaces even a loaded set
    // (unlike a drop, which grows it).
    void recentFilesOpenAsShowOrAsASetOfOne()
    {
        DropFixture f;
        const QString show = savedShow(f, "gig.Brelvonic");
        f.model.replacePlaylist({f.a});
        f.model.openRecentFile(show);
        QCOMPARE(f.names(), QStringList{"song.pdf"});
        QCOMPARE(f.model.showFileURL(), std::optional<QString>(show));

        f.model.openRecentFile(f.a);
        QCOMPARE(f.names(), QStringList{"a.pdf"});
        QVERIFY(!f.model.showFileURL());
        QVERIFY(f.alerts().isEmpty());
    }

    void openPanelsReplaceOrAppendAndCancelDoesNothing()
    {
        ModelWithFolder s;
        auto& dialogs = *s.platform.dialogs;
        dialogs.openReplies = {{s.pdf("b.pdf", 1), s.pdf("a.pdf", 1)}, {}, {s.file("b.pdf")}, {}};
        s.model.presentOpenPanel();
        QCOMPARE(s.names(), (QStringList{"b.pdf", "a.pdf"}));
        const auto& open = dialogs.openRequests.at(0);
        QCOMPARE((QStringList{open.title, open.prompt}), (QStringList{L10n::t("open.pdf"), L10n::t("open")}));
        QVERIFY(open.multiple);
        QVERIFY(!open.directories);
        QVERIFY(open.nameFilters.join(' ').contains("*.pdf"));

        s.model.presentOpenPanel();  // cancelled
        QCOMPARE(s.names(), (QStringList{"b.pdf", "a.pdf"}));

        s.model.presentAddToPlaylistPanel();
        QCOMPARE(s.names(), (QStringList{"b.pdf", "a.pdf", "b.pdf"}));
        const auto& add = dialogs.openRequests.at(2);
        QCOMPARE((QStringList{add.title, add.prompt}), (QStringList{L10n::t("add.to_set"), L10n::t("add")}));
        QVERIFY(add.multiple);

        s.model.presentAddToPlaylistPanel();  // cancelled
        QCOMPARE(s.model.playlist().size(), std::size_t(3));
        QVERIFY(s.alerts().isEmpty());
    }

    void folderPanelOpensTheFolderOrNamesAnEmptyOne()
    {
        DropFixture f;
        QDir().mkpath(f.file("Empty Gig"));
        f.model.replacePlaylist({f.a});

        f.platform.dialogs->openReplies = {{f.file("Empty Gig")}, {f.deck}, {}};
        f.model.presentFolderPanel();
        const auto& request = f.platform.dialogs->openRequests.at(0);
        QCOMPARE((QStringList{request.title, request.prompt}), (QStringList{L10n::t("open.folder_pdf"), L10n::t("open")}));
        QVERIFY(request.directories);
        QVERIFY(!request.multiple);
        const QStringList emptyAlert{L10n::t("alert.folder_empty") + ": Empty Gig"};
        QCOMPARE(f.alerts(), emptyAlert);
        QCOMPARE(f.names(), QStringList{"a.pdf"});

        f.model.presentFolderPanel();
        QCOMPARE(f.names(), (QStringList{"Slide 2.pdf", "Slide 10.pdf"}));

        f.model.presentFolderPanel();  // cancelled
        QCOMPARE(f.names(), (QStringList{"Slide 2.pdf", "Slide 10.pdf"}));
        QCOMPARE(f.alerts(), emptyAlert);
    }

    void droppedTextFormsGiveFilePaths()
    {
        using DocumentIntake::parse;
        // Text: a file URL or an absolute path, trimmed and standardized.
        QCOMPARE(parse(QString("file:///tmp/My%20Deck.pdf")), std::optional<QString>("/tmp/My Deck.pdf"));
        QCOMPARE(parse(QString("  /tmp/x/../a.pdf \r\n")), std::optional<QString>("/tmp/a.pdf"));
        QCOMPARE(parse(QString("a.pdf")), std::nullopt);
        QCOMPARE(parse(QString("https://example.com/a.pdf")), std::nullopt);
        QCOMPARE(parse(QString("  \n")), std::nullopt);
        // A host in a file URL (drag protocols write the machine's name) is
        // not part of the path.
        QCOMPARE(parse(QString("file://localhost/tmp/a.pdf")), std::optional<QString>("/tmp/a.pdf"));
        QCOMPARE(parse(QByteArray("file://stage-mac/tmp/a%20b.pdf")), std::optional<QString>("/tmp/a b.pdf"));

        // Data: a URL's encoded form, else UTF-8 text without control characters.
        QCOMPARE(parse(QByteArray("file:///tmp/caf%C3%A9.pdf")), std::optional<QString>("/tmp/café.pdf"));
        QCOMPARE(parse(QByteArray("\x02 /tmp/b.pdf\x00\r\n", 16)), std::optional<QString>("/tmp/b.pdf"));
        QCOMPARE(parse(QByteArray(" file:///tmp/c.pdf\n")), std::optional<QString>("/tmp/c.pdf"));
        QCOMPARE(parse(QByteArray("rel/d.pdf")), std::optional<QString>(QDir::current().absoluteFilePath("rel/d.pdf")));
        QCOMPARE(parse(QByteArray("\xff\xfe/tmp/e.pdf")), std::nullopt);
        QCOMPARE(parse(QByteArray("\t\x01\n")), std::nullopt);

        // Forms that once gave paths that were not absolute, or named a
        // resource inside the program instead of a file.
        const QString here = QDir::currentPath();
        const std::vector<std::pair<QByteArray, std::optional<QString>>> odd{
            {"file:o", std::nullopt},
            {"file:", std::nullopt},
            {"file:///tmp/a%00b.pdf", std::nullopt},
            {QByteArray("a\0b.pdf", 7), std::nullopt},
            {QByteArray("/tmp/a\0/b.pdf", 13), std::nullopt},
            {":intro.pdf", here + "/:intro.pdf"},
            {"..", QDir::cleanPath(here + "/..")},
        };
        for (const auto& [bytes, expected] : odd) {
            QCOMPARE(parse(bytes), expected);
            const auto text = parse(QString::fromUtf8(bytes));
            QVERIFY2(!text || (text->startsWith(u'/') && !text->contains(QChar(0))), bytes.constData());
        }
        QCOMPARE(parse(QString(":intro.pdf")), std::nullopt);
        QCOMPARE(parse(QString("file:o")), std::nullopt);
    }

    void dragDataGivesFileUrlsOrOneTextPath()
    {
        using DocumentIntake::fileURLs;
        QMimeData both;
        both.setUrls({QUrl::fromLocalFile("/tmp/a.pdf"), QUrl("https://example.com/b.pdf"), QUrl::fromLocalFile("/tmp/x/../c")});
        both.setText("/tmp/ignored.pdf");
        QCOMPARE(fileURLs(&both), (QStringList{"/tmp/a.pdf", "/tmp/c"}));

        QMimeData withHost;
        withHost.setData("text/uri-list", "file://stage-mac/tmp/Deck%202.pdf\r\n");
        QCOMPARE(fileURLs(&withHost), QStringList{"/tmp/Deck 2.pdf"});

        QMimeData webOnly;
        webOnly.setUrls({QUrl("https://example.com/b.pdf")});
        webOnly.setText("/tmp/from text.pdf\n");
        QCOMPARE(fileURLs(&webOnly), QStringList{"/tmp/from text.pdf"});

        QMimeData words;
        words.setText("just some words");
        QVERIFY(fileURLs(&words).isEmpty());
        QVERIFY(fileURLs(nullptr).isEmpty());
    }

    void commandLineArgumentsBecomeAbsolutePaths()
    {
        const QStringList paths = DocumentIntake::argumentPaths(
            {"deck.pdf", "../shows/gig.brelvonic", "/abs/./b.pdf", "file:///tmp/My%20Deck.pdf", "", "file://localhost/tmp/c.pdf"},
            "/home/op/talks");
        QCOMPARE(paths, (QStringList{"/home/op/talks/deck.pdf", "/home/op/shows/gig.brelvonic", "/abs/b.pdf", "/tmp/My Deck.pdf",
                                     "/tmp/c.pdf"}));
        // A leading colon is part of a file name here, and a file URL
        // without a folder is taken from the working folder, as a shell
        // would; what names no file is left out.
        QCOMPARE(DocumentIntake::argumentPaths({":intro.pdf", "file:slides.pdf", "file:o", QString::fromUtf8("a\0b", 3), "file:///x%00y"},
                                               "/home/op/talks"),
                 (QStringList{"/home/op/talks/:intro.pdf", "/home/op/talks/slides.pdf", "/home/op/talks/o"}));
        QVERIFY(DocumentIntake::argumentPaths({"deck.pdf"}, "relative/folder").isEmpty());
    }
};

QTEST_MAIN(IntakeTest)
#include "tst_Intake.moc"
