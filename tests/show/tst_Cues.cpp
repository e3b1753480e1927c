#include "support/ModelFixtures.h"

#include <QtTest>

// Cues and slide notes of the current PDF.
class CuesTest : public QObject {
    Q_OBJECT

    // Each cue as "page: title", in the order held.
    static QStringList listed(const std::vector<CueBookmark>& cues)
    {
        QStringList out;
        for (const auto& cue : cues)
            out << QString::number(cue.pageIndex) + ": " + cue.title;
        return out;
    }

    // A session with a set of one PDF, a.pdf, of `pages` pages.
    struct OnePdf : ModelWithFolder {
        explicit OnePdf(int pages) { model.replacePlaylist({pdf("a.pdf", pages)}); }
    };

private slots:
    void titlesAreTrimmedAndBlankNamesNameTheSlide()
    {
        OnePdf s(8);
        s.model.addBookmark("  Chorus \n", 4);
        QCOMPARE(listed(s.model.currentCues()), QStringList{"4: Chorus"});

        // Blank on the same page: replaced, with a new id and the slide's name.
        const QUuid first = s.model.currentCues()[0].id;
        s.model.addBookmark(" \t\n ", 4);
        QCOMPARE(listed(s.model.currentCues()), QStringList{"4: Slide 5"});
        QVERIFY(s.model.currentCues()[0].id != first);

        // No page given: the current one. Long titles are kept whole.
        s.model.goToPage(6);
        const QString long_(300, u'x');
        s.model.addBookmark(long_);
        QCOMPARE(listed(s.model.currentCues()), (QStringList{"4: Slide 5", "6: " + long_}));
    }

    void cuesStaySortedWithOnePerPage()
    {
        OnePdf s(12);
        s.model.addBookmark("Nine", 9);
        s.model.addBookmark("Two", 2);
        s.model.addBookmark("Five", 5);
        QCOMPARE(listed(s.model.currentCues()), (QStringList{"2: Two", "5: Five", "9: Nine"}));
        // The entry itself holds them sorted, which is what a show writes.
        QCOMPARE(listed(s.model.playlist()[0].cues), (QStringList{"2: Two", "5: Five", "9: Nine"}));

        s.model.addBookmark("Bridge", 5);
        const auto cues = s.model.currentCues();
        QCOMPARE(listed(cues), (QStringList{"2: Two", "5: Bridge", "9: Nine"}));
        // A page index is not checked against the page count.
        s.model.addBookmark("Beyond", 40);
        QCOMPARE(listed(s.model.currentCues()), (QStringList{"2: Two", "5: Bridge", "9: Nine", "40: Beyond"}));

        s.model.removeBookmark(cues[0].id);
        QCOMPARE(listed(s.model.currentCues()), (QStringList{"5: Bridge", "9: Nine", "40: Beyond"}));
        s.model.removeBookmark(QUuid::createUuid());
        QCOMPARE(s.model.currentCues().size(), std::size_t(3));
    }

    void nextAndPreviousCueWrapWithinThePdf()
    {
        ModelWithFolder s;
        s.model.replacePlaylist({s.pdf("a.pdf", 10), s.pdf("b.pdf", 10)});
        s.model.goToNextCue();
        QCOMPARE(s.model.pageIndex(), 0);
        s.model.addBookmark("Verse", 2);
        s.model.addBookmark("Chorus", 7);

        // The pages three steps in one direction visit.
        const auto visits = [&](void (AppModel::*step)()) {
            std::vector<int> visited;
            for (int i = 0; i < 3; ++i) {
                (s.model.*step)();
                visited.push_back(s.model.pageIndex());
            }
            return visited;
        };
        QCOMPARE(visits(&AppModel::goToNextCue), (std::vector<int>{2, 7, 2}));
        s.model.goToPage(8);
        QCOMPARE(visits(&AppModel::goToPreviousCue), (std::vector<int>{7, 2, 7}));
        s.model.goToPage(0);
        s.model.goToPreviousCue();
        QCOMPARE(s.model.pageIndex(), 7);
        QCOMPARE(s.model.playlistIndex(), 0);
    }

    void withoutAnEntryNothingHappens()
    {
        ModelWithFolder s;
        s.model.addBookmark("Intro", 0);
        s.model.setCurrentNote("Hello");
        s.model.goToNextCue();
        s.model.goToPreviousCue();
        s.model.promptAddBookmark();
        QVERIFY(s.model.currentCues().empty());
        QCOMPARE(s.model.currentNote(), QString());
        QVERIFY(s.model.playlist().empty());
        QVERIFY(s.platform.dialogs->promptRequests.empty());
    }

    void notesKeepTheirSpacesAndBlankRemoves()
    {
        OnePdf s(4);
        s.model.goToPage(2);
        s.model.setCurrentNote(" Pause ");
        QCOMPARE(s.model.currentNote(), QString(" Pause "));
        QCOMPARE(s.model.playlist()[0].notesByPage, (std::map<qint64, QString>{{2, " Pause "}}));
        s.model.goToPage(1);
        QCOMPARE(s.model.currentNote(), QString());
        s.model.goToPage(2);
        s.model.setCurrentNote("   ");
        QVERIFY(s.model.playlist()[0].notesByPage.empty());
        QCOMPARE(s.model.currentNote(), QString());
    }

    void eachPdfHasItsOwnCuesAndNotes()
    {
        ModelWithFolder s;
        s.model.replacePlaylist({s.pdf("a.pdf", 5), s.pdf("b.pdf", 5)});
        s.model.addBookmark("A intro", 1);
        s.model.goToPage(1);
        s.model.setCurrentNote("note of a");
        const QUuid aCue = s.model.currentCues()[0].id;

        s.model.selectPlaylistItem(s.model.playlist()[1].id);
        QVERIFY(s.model.currentCues().empty());
        s.model.goToPage(1);
        QCOMPARE(s.model.currentNote(), QString());
        s.model.addBookmark("B outro", 3);
        // Removal goes by id within the current PDF only.
        s.model.removeBookmark(aCue);
        QCOMPARE(s.model.playlist()[0].cues.size(), std::size_t(1));
        QCOMPARE(listed(s.model.currentCues()), QStringList{"3: B outro"});

        // Cues travel with their PDF when the set is reordered.
        s.model.movePlaylist({1}, 0);
        QCOMPARE(s.model.playlist()[1].cues[0].title, QString("A intro"));
        QCOMPARE(s.model.playlist()[1].notesByPage.at(1), QString("note of a"));
        QCOMPARE(s.model.currentCues()[0].title, QString("B outro"));
    }

    void promptAsksForANameOnTheCurrentSlide()
    {
        OnePdf s(6);
        s.model.goToPage(3);

        s.platform.dialogs->promptReplies.push_back(std::nullopt);
        s.model.promptAddBookmark();
        QVERIFY(s.model.currentCues().empty());
        QCOMPARE(s.platform.dialogs->promptRequests.size(), std::size_t(1));
        const auto& options = s.platform.dialogs->promptRequests[0];
        QCOMPARE((QStringList{options.title, options.informativeText, options.placeholder, options.text, options.okLabel,
                              options.cancelLabel}),
                 (QStringList{"Cue on slide 4", "Short name: intro, chorus, bridge…", "Chorus", "", "Add", "Cancel"}));

        s.platform.dialogs->promptReplies.push_back(QString(" Bridge "));
        s.model.promptAddBookmark();
        QCOMPARE(listed(s.model.currentCues()), QStringList{"3: Bridge"});

        s.platform.dialogs->promptReplies.push_back(QString());
        s.model.promptAddBookmark();
        QCOMPARE(listed(s.model.currentCues()), QStringList{"3: Slide 4"});
    }
};

QTEST_MAIN(CuesTest)
#include "tst_Cues.moc"
