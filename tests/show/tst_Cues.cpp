#include "model/AppModel.h"
#include "support/FakePlatform.h"
#include "support/TestPdf.h"

#include <QtTest>

// Cues and slide notes of the current PDF.
class CuesTest : public QObject {
    Q_OBJECT

    static std::vector<int> pages(const std::vector<CueBookmark>& cues)
    {
        std::vector<int> out;
        for (const auto& cue : cues)
            out.push_back(cue.pageIndex);
        return out;
    }

private slots:
    void titlesAreTrimmedAndBlankNamesNameTheSlide()
    {
        TestFolder folder;
        FakePlatform platform;
        AppModel model(platform.services());
        model.replacePlaylist({folder.pdf("a.pdf", 8)});
        model.addBookmark("  Chorus \n", 4);
        QCOMPARE(model.currentCues().size(), std::size_t(1));
        QCOMPARE(model.currentCues()[0].title, QString("Chorus"));
        QCOMPARE(model.currentCues()[0].pageIndex, 4);

        // Blank on the same page: replaced, with a new id and the slide's name.
        const QUuid first = model.currentCues()[0].id;
        model.addBookmark(" \t\n ", 4);
        QCOMPARE(model.currentCues().size(), std::size_t(1));
        QCOMPARE(model.currentCues()[0].title, QString("Slide 5"));
        QVERIFY(model.currentCues()[0].id != first);

        // No page given: the current one. Long titles are kept whole.
        model.goToPage(6);
        const QString long_(300, u'x');
        model.addBookmark(long_);
        QCOMPARE(pages(model.currentCues()), (std::vector<int>{4, 6}));
        QCOMPARE(model.currentCues()[1].title, long_);
    }

    void cuesStaySortedWithOnePerPage()
    {
        TestFolder folder;
        FakePlatform platform;
        AppModel model(platform.services());
        model.replacePlaylist({folder.pdf("a.pdf", 12)});
        model.addBookmark("Nine", 9);
        model.addBookmark("Two", 2);
        model.addBookmark("Five", 5);
        QCOMPARE(pages(model.currentCues()), (std::vector<int>{2, 5, 9}));
        // The entry itself holds them sorted, which is what a show writes.
        QCOMPARE(pages(model.playlist()[0].cues), (std::vector<int>{2, 5, 9}));

        model.addBookmark("Bridge", 5);
        const auto cues = model.currentCues();
        QCOMPARE(pages(cues), (std::vector<int>{2, 5, 9}));
        QCOMPARE(cues[1].title, QString("Bridge"));
        // A page index is not checked against the page count.
        model.addBookmark("Beyond", 40);
        QCOMPARE(pages(model.currentCues()), (std::vector<int>{2, 5, 9, 40}));

        model.removeBookmark(cues[0].id);
        QCOMPARE(pages(model.currentCues()), (std::vector<int>{5, 9, 40}));
        model.removeBookmark(QUuid::createUuid());
        QCOMPARE(model.currentCues().size(), std::size_t(3));
    }

    void nextAndPreviousCueWrapWithinThePdf()
    {
        TestFolder folder;
        FakePlatform platform;
        AppModel model(platform.services());
        model.replacePlaylist({folder.pdf("a.pdf", 10), folder.pdf("b.pdf", 10)});
        model.goToNextCue();
        QCOMPARE(model.pageIndex(), 0);
        model.addBookmark("Verse", 2);
        model.addBookmark("Chorus", 7);

        std::vector<int> visited;
        for (int i = 0; i < 3; ++i) {
            model.goToNextCue();
            visited.push_back(model.pageIndex());
        }
        QCOMPARE(visited, (std::vector<int>{2, 7, 2}));

        model.goToPage(8);
        visited.clear();
        for (int i = 0; i < 3; ++i) {
            model.goToPreviousCue();
            visited.push_back(model.pageIndex());
        }
        QCOMPARE(visited, (std::vector<int>{7, 2, 7}));
        model.goToPage(0);
        model.goToPreviousCue();
        QCOMPARE(model.pageIndex(), 7);
        QCOMPARE(model.playlistIndex(), 0);
    }

    void withoutAnEntryNothingHappens()
    {
        FakePlatform platform;
        AppModel model(platform.services());
        model.addBookmark("Intro", 0);
        model.setCurrentNote("Hello");
        model.goToNextCue();
        model.goToPreviousCue();
        model.promptAddBookmark();
        QVERIFY(model.currentCues().empty());
        QCOMPARE(model.currentNote(), QString());
        QVERIFY(model.playlist().empty());
        QVERIFY(platform.dialogs->promptRequests.empty());
    }

    void notesKeepTheirSpacesAndBlankRemoves()
    {
        TestFolder folder;
        FakePlatform platform;
        AppModel model(platform.services());
        model.replacePlaylist({folder.pdf("a.pdf", 4)});
        model.goToPage(2);
        model.setCurrentNote(" Pause ");
        QCOMPARE(model.currentNote(), QString(" Pause "));
        QCOMPARE(model.playlist()[0].notesByPage, (std::map<qint64, QString>{{2, " Pause "}}));
        model.goToPage(1);
        QCOMPARE(model.currentNote(), QString());
        model.goToPage(2);
        model.setCurrentNote("   ");
        QVERIFY(model.playlist()[0].notesByPage.empty());
        QCOMPARE(model.currentNote(), QString());
    }

    void eachPdfHasItsOwnCuesAndNotes()
    {
        TestFolder folder;
        FakePlatform platform;
        AppModel model(platform.services());
        model.replacePlaylist({folder.pdf("a.pdf", 5), folder.pdf("b.pdf", 5)});
        model.addBookmark("A intro", 1);
        model.goToPage(1);
        model.setCurrentNote("note of a");
        const QUuid aCue = model.currentCues()[0].id;

        model.selectPlaylistItem(model.playlist()[1].id);
        QVERIFY(model.currentCues().empty());
        model.goToPage(1);
        QCOMPARE(model.currentNote(), QString());
        model.addBookmark("B outro", 3);
        // Removal goes by id within the current PDF only.
        model.removeBookmark(aCue);
        QCOMPARE(model.playlist()[0].cues.size(), std::size_t(1));
        QCOMPARE(pages(model.currentCues()), (std::vector<int>{3}));

        // Cues travel with their PDF when the set is reordered.
        model.movePlaylist({1}, 0);
        QCOMPARE(model.playlist()[1].cues[0].title, QString("A intro"));
        QCOMPARE(model.playlist()[1].notesByPage.at(1), QString("note of a"));
        QCOMPARE(model.currentCues()[0].title, QString("B outro"));
    }

    void promptAsksForANameOnTheCurrentSlide()
    {
        TestFolder folder;
        FakePlatform platform;
        AppModel model(platform.services());
        model.replacePlaylist({folder.pdf("a.pdf", 6)});
        model.goToPage(3);

        platform.dialogs->promptReplies.push_back(std::nullopt);
        model.promptAddBookmark();
        QVERIFY(model.currentCues().empty());
        QCOMPARE(platform.dialogs->promptRequests.size(), std::size_t(1));
        const auto& options = platform.dialogs->promptRequests[0];
        QCOMPARE(options.title, QString("Cue on slide 4"));
        QCOMPARE(options.informativeText, QString("Short name: intro, chorus, bridge…"));
        QCOMPARE(options.placeholder, QString("Chorus"));
        QCOMPARE(options.text, QString());
        QCOMPARE(options.okLabel, QString("Add"));
        QCOMPARE(options.cancelLabel, QString("Cancel"));

        platform.dialogs->promptReplies.push_back(QString(" Bridge "));
        model.promptAddBookmark();
        QCOMPARE(model.currentCues().size(), std::size_t(1));
        QCOMPARE(model.currentCues()[0].title, QString("Bridge"));
        QCOMPARE(model.currentCues()[0].pageIndex, 3);

        platform.dialogs->promptReplies.push_back(QString());
        model.promptAddBookmark();
        QCOMPARE(model.currentCues()[0].title, QString("Slide 4"));
    }
};

QTEST_MAIN(CuesTest)
#include "tst_Cues.moc"
