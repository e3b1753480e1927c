#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "show/DocumentIntake.h"
#include "support/FakePlatform.h"
#include "support/TestPdf.h"

#include <QDir>
#include <QFile>
#include <QMimeData>
#include <QUrl>
#include <QtTest>

namespace {

QStringList fileNames(const QStringList& paths)
{
    QStringList names;
    for (const QString& path : paths)
        names << QFileInfo(path).fileName();
    return names;
}

QStringList setNames(const AppModel& model)
{
    QStringList urls;
    for (const auto& entry : model.playlist())
        urls << entry.url;
    return fileNames(urls);
}

void writeText(const QString& path, const QByteArray& text = "not a slide")
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(text);
}

// a.pdf, a folder "deck" holding Slide 10.pdf, Slide 2.pdf and .hidden.pdf,
// and notes.txt: the drop that every drop test starts from.
struct DropFixture {
    TestFolder folder;
    QString a, deck, notes;

    DropFixture()
    {
        a = folder.pdf("a.pdf", 2);
        deck = folder.file("deck");
        QDir().mkpath(deck);
        folder.pdf("deck/Slide 10.pdf", 1);
        folder.pdf("deck/Slide 2.pdf", 1);
        folder.pdf("deck/.hidden.pdf", 1);
        notes = folder.file("notes.txt");
        writeText(notes);
    }
    QStringList drop() const { return {a, deck, notes}; }
};

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
        QCOMPARE(fileNames(found), (QStringList{"alpha.Pdf", "Slide 2.pdf", "slide 3.PDF", "Slide 4.pdf", "Slide 10.pdf"}));
        QCOMPARE(found.constFirst(), QDir::cleanPath(folder.file("alpha.Pdf")));

        QVERIFY(AppModel::pdfs(folder.file("missing")).isEmpty());
        QVERIFY(AppModel::pdfs(folder.file("readme.txt")).isEmpty());
    }

    void dropOntoAnEmptySetMakesTheSetInDropOrder()
    {
        DropFixture fixture;
        FakePlatform platform;
        AppModel model(platform.services());
        model.ingestDroppedURLs(fixture.drop());
        QCOMPARE(setNames(model), (QStringList{"a.pdf", "Slide 2.pdf", "Slide 10.pdf"}));
        QCOMPARE(model.playlistIndex(), 0);
        QCOMPARE(model.documentURL(), std::optional<QString>(fixture.a));
        QVERIFY(platform.dialogs->alerts.empty());
    }

    void dropOntoALoadedSetAppendsAndKeepsTheCurrentSlide()
    {
        DropFixture fixture;
        const QString first = fixture.folder.pdf("first.pdf", 3);
        FakePlatform platform;
        AppModel model(platform.services());
        model.replacePlaylist({first});
        model.goToPage(2);
        // Paths as a drop may carry them: with "." and ".." parts.
        const QString dotted = fixture.folder.path() + "/deck/../deck/.";
        model.ingestDroppedURLs({fixture.folder.path() + "/./a.pdf", dotted, fixture.notes});
        QCOMPARE(setNames(model), (QStringList{"first.pdf", "a.pdf", "Slide 2.pdf", "Slide 10.pdf"}));
        QCOMPARE(model.playlist()[1].url, fixture.a);
        QCOMPARE(model.playlistIndex(), 0);
        QCOMPARE(model.pageIndex(), 2);
    }

    void dropsWithoutPdfsChangeNothingSilently()
    {
        TestFolder folder;
        writeText(folder.file("notes.txt"));
        QDir().mkpath(folder.file("empty"));
        FakePlatform platform;
        AppModel model(platform.services());
        model.ingestDroppedURLs({folder.file("notes.txt"), folder.file("empty"), QString()});
        model.ingestDroppedURLs({});
        QVERIFY(model.playlist().empty());
        QVERIFY(!model.document());
        QVERIFY(platform.dialogs->alerts.empty());
    }

    void aShowFileInADropWinsOverEverythingElse()
    {
        DropFixture fixture;
        const QString show = fixture.folder.file("gig.BRELVONIC");
        {
            FakePlatform platform;
            AppModel saved(platform.services());
            saved.replacePlaylist({fixture.folder.pdf("song.pdf", 2)});
            saved.saveShow(show);
            QVERIFY(platform.dialogs->alerts.empty());
        }
        FakePlatform platform;
        AppModel model(platform.services());
        model.ingestDroppedURLs({fixture.a, show, fixture.deck});
        QCOMPARE(setNames(model), QStringList{"song.pdf"});
        QCOMPARE(model.showFileURL(), std::optional<QString>(show));

        // Also onto a loaded set: the show replaces it, nothing is appended.
        model.replacePlaylist({fixture.a});
        model.ingestDroppedURLs({fixture.deck, show});
        QCOMPARE(setNames(model), QStringList{"song.pdf"});
    }

    // A recent show opens as a show; a recent PDF replaces even a loaded set
    // (unlike a drop, which grows it).
    void recentFilesOpenAsShowOrAsASetOfOne()
    {
        DropFixture fixture;
        const QString show = fixture.folder.file("gig.Brelvonic");
        {
            FakePlatform platform;
            AppModel saved(platform.services());
            saved.replacePlaylist({fixture.folder.pdf("song.pdf", 2)});
            saved.saveShow(show);
        }
        FakePlatform platform;
        AppModel model(platform.services());
        model.replacePlaylist({fixture.a});
        model.openRecentFile(show);
        QCOMPARE(setNames(model), QStringList{"song.pdf"});
        QCOMPARE(model.showFileURL(), std::optional<QString>(show));

        model.openRecentFile(fixture.a);
        QCOMPARE(setNames(model), QStringList{"a.pdf"});
        QVERIFY(!model.showFileURL());
        QVERIFY(platform.dialogs->alerts.empty());
    }

    void openPanelsReplaceOrAppendAndCancelDoesNothing()
    {
        TestFolder folder;
        const QString a = folder.pdf("a.pdf", 1);
        const QString b = folder.pdf("b.pdf", 1);
        FakePlatform platform;
        AppModel model(platform.services());

        platform.dialogs->openReplies = {{b, a}, {}, {b}, {}};
        model.presentOpenPanel();
        QCOMPARE(setNames(model), (QStringList{"b.pdf", "a.pdf"}));
        const auto& open = platform.dialogs->openRequests.at(0);
        QCOMPARE(open.title, L10n::t("open.pdf"));
        QCOMPARE(open.prompt, L10n::t("open"));
        QVERIFY(open.multiple);
        QVERIFY(!open.directories);
        QVERIFY(open.nameFilters.join(' ').contains("*.pdf"));

        model.presentOpenPanel();  // cancelled
        QCOMPARE(setNames(model), (QStringList{"b.pdf", "a.pdf"}));

        model.presentAddToPlaylistPanel();
        QCOMPARE(setNames(model), (QStringList{"b.pdf", "a.pdf", "b.pdf"}));
        const auto& add = platform.dialogs->openRequests.at(2);
        QCOMPARE(add.title, L10n::t("add.to_set"));
        QCOMPARE(add.prompt, L10n::t("add"));
        QVERIFY(add.multiple);

        model.presentAddToPlaylistPanel();  // cancelled
        QCOMPARE(model.playlist().size(), std::size_t(3));
        QVERIFY(platform.dialogs->alerts.empty());
    }

    void folderPanelOpensTheFolderOrNamesAnEmptyOne()
    {
        DropFixture fixture;
        QDir().mkpath(fixture.folder.file("Empty Gig"));
        FakePlatform platform;
        AppModel model(platform.services());
        model.replacePlaylist({fixture.a});

        platform.dialogs->openReplies = {{fixture.folder.file("Empty Gig")}, {fixture.deck}, {}};
        model.presentFolderPanel();
        const auto& request = platform.dialogs->openRequests.at(0);
        QCOMPARE(request.title, L10n::t("open.folder_pdf"));
        QCOMPARE(request.prompt, L10n::t("open"));
        QVERIFY(request.directories);
        QVERIFY(!request.multiple);
        QCOMPARE(platform.dialogs->alerts.size(), std::size_t(1));
        QCOMPARE(platform.dialogs->alerts[0].title, L10n::t("alert.folder_empty"));
        QCOMPARE(platform.dialogs->alerts[0].text, QStringLiteral("Empty Gig"));
        QCOMPARE(setNames(model), QStringList{"a.pdf"});

        model.presentFolderPanel();
        QCOMPARE(setNames(model), (QStringList{"Slide 2.pdf", "Slide 10.pdf"}));

        model.presentFolderPanel();  // cancelled
        QCOMPARE(setNames(model), (QStringList{"Slide 2.pdf", "Slide 10.pdf"}));
        QCOMPARE(platform.dialogs->alerts.size(), std::size_t(1));
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
    }
};

QTEST_MAIN(IntakeTest)
#include "tst_Intake.moc"
