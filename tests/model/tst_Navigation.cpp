#include "model/AppModel.h"
#include "support/FakePlatform.h"
#include "support/ModelFixtures.h"
#include "support/TestPdf.h"

#include <QtTest>


class NavigationTest : public QObject {
    Q_OBJECT

    TestFolder folder;
    QString three, two, ten;

    void typeJump(AppModel& model, const QString& digits)
    {
        for (const QChar c : digits)
            model.appendJumpDigit(QString(c));
        model.commitJump();
    }

private slots:
    void initTestCase()
    {
        three = folder.pdf("three.pdf", 3);
        two = folder.pdf("two.pdf", 2, TestPdf::standard);
        ten = folder.pdf("ten.pdf", 10);
    }

    void nothingMovesWithoutADocument()
    {
        auto&& [platform, model] = ModelOnFakes();
        QVERIFY(!model.canGoNext());
        QVERIFY(!model.canGoPrevious());
        model.jumpBuffer.set("7");
        model.goToNextSlide();
        model.goToPage(3);
        model.appendJumpDigit("1");
        QCOMPARE(model.jumpBuffer(), QStringLiteral("7"));
        QCOMPARE(model.pageIndex(), 0);
        QVERIFY(!model.upcomingLabel());
        QVERIFY(!model.upcomingPage());
    }

    void pagesAcrossFilesAsOneSequence()
    {
        auto&& [platform, model] = ModelOnFakes();
        model.replacePlaylist({three, two});
        QVERIFY(!model.canGoPrevious());
        model.goToNextSlide();
        model.goToNextSlide();
        QCOMPARE(model.pageIndex(), 2);
        QCOMPARE(model.upcomingLabel(), std::optional<QString>("1"));
        auto upcoming = model.upcomingPage();
        QVERIFY(upcoming);
        QCOMPARE(upcoming->document->path(), two);
        QCOMPARE(upcoming->index, 0);

        QVERIFY(slidesSettled(model));
        platform.scheduler->runAll();
        model.jumpBuffer.set("4");
        model.goToNextSlide();
        QVERIFY(slidesSettled(model));
        // The fade leaves the old file's last page, captured before the move.
        QCOMPARE(TestPdf::pageShown(model.outgoingSlideImage()), 2);
        QCOMPARE(model.outgoingSlideImage()->size(), QSize(1920, 1080));
        QCOMPARE(model.incomingSlideImage()->size(), QSize(1440, 1080));
        QCOMPARE(model.transitionProgress(), 0.0);
        platform.scheduler->runAll();
        QCOMPARE(model.transitionProgress(), 1.0);
        QVERIFY(!model.outgoingSlideImage());
        QCOMPARE(position(model), "1:0/2");
        QCOMPARE(model.jumpBuffer(), QString());
        QCOMPARE(TestPdf::pageShown(model.previewSlideImage()), 0);
        QCOMPARE(TestPdf::pageShown(model.incomingSlideImage()), 0);
        QCOMPARE(model.previewSlideImage()->size(), QSize(1440, 1080));  // 4:3 page in the 1920×1080 snapshot

        model.goToPreviousSlide();
        QCOMPARE(position(model), "0:2/3");
        QCOMPARE(TestPdf::pageShown(model.previewSlideImage()), 2);
        QCOMPARE(model.previewSlideImage()->size(), QSize(1920, 1080));
    }

    void theEndOfTheSetDoesNotWrap()
    {
        auto&& [platform, model] = ModelOnFakes();
        model.replacePlaylist({three, two});
        model.selectPlaylistItem(model.playlist()[1].id);
        model.goToNextSlide();
        QCOMPARE(model.pageIndex(), 1);
        QVERIFY(!model.canGoNext());
        QVERIFY(!model.upcomingLabel());
        QVERIFY(!model.upcomingPage());
        model.appendJumpDigit("3");
        model.goToNextSlide();
        QCOMPARE(model.jumpBuffer(), QStringLiteral("3"));
        QCOMPARE(model.playlistIndex(), 1);
        QCOMPARE(model.pageIndex(), 1);
    }

    void typedJumps()
    {
        auto&& [platform, model] = ModelOnFakes();
        model.replacePlaylist({ten, three});
        typeJump(model, "12");  // past the end: the last page of this file
        QCOMPARE(model.playlistIndex(), 0);
        QCOMPARE(model.pageIndex(), 9);
        typeJump(model, "0");
        QCOMPARE(model.pageIndex(), 0);
        typeJump(model, "5");
        QCOMPARE(model.pageIndex(), 4);
        QCOMPARE(model.jumpBuffer(), QString());

        for (const char* d : {"1", "2", "3", "4", "5"})
            model.appendJumpDigit(d);
        QCOMPARE(model.jumpBuffer(), QStringLiteral("5"));
        model.jumpBuffer.set(QString());
        model.commitJump();  // nothing typed: no move
        QCOMPARE(model.pageIndex(), 4);

        // Signed numbers and the ends of the 64-bit range clamp to the file;
        // anything that is not a number moves nowhere (-1) and is consumed.
        model.goToPage(6);
        const std::pair<const char*, int> jumps[] = {
            {"1a", -1}, {"+", -1}, {"99999999999999999999", -1}, {"9223372036854775808", -1}, {"--1", -1}, {" 3", -1},
            {"3 ", -1}, {"\u0663", -1}, {"+3", 2}, {"-4", 0}, {"9223372036854775807", 9}, {"-9223372036854775808", 0}};
        for (const auto& [typed, page] : jumps) {
            const int before = model.pageIndex();
            model.jumpBuffer.set(typed);
            model.commitJump();
            QCOMPARE(model.jumpBuffer(), QString());
            QVERIFY2(model.pageIndex() == (page < 0 ? before : page), typed);
        }
    }

    void goingToTheCurrentPageChangesNothing()
    {
        auto&& [platform, model] = ModelOnFakes();
        model.replacePlaylist({ten});
        model.goToPage(3);
        platform.scheduler->runAll();
        model.zoomCenter.set(QPointF(0.5, 0.5));
        model.jumpBuffer.set("4");
        const auto preview = model.previewSlideImage();
        const auto incoming = model.incomingSlideImage();
        model.goToPage(3);
        QCOMPARE(model.zoomCenter(), std::optional<QPointF>(QPointF(0.5, 0.5)));
        QCOMPARE(model.previewSlideImage(), preview);
        QCOMPARE(model.incomingSlideImage(), incoming);
        QVERIFY(!model.outgoingSlideImage());
        QCOMPARE(model.transitionProgress(), 1.0);
        QCOMPARE(model.jumpBuffer(), QString());  // the buffer is still consumed
        // Clamped targets that land on the current page are no move either.
        model.goToPage(9);
        platform.scheduler->runAll();
        model.goToPage(40);
        QVERIFY(!model.outgoingSlideImage());
        QCOMPARE(model.transitionProgress(), 1.0);
    }

    void zoomCentreSurvivesOnlyWithTheZoomTool()
    {
        auto&& [platform, model] = ModelOnFakes();
        model.replacePlaylist({ten});
        model.stageTool.set(StageTool::zoom);
        model.zoomCenter.set(QPointF(0.2, 0.3));
        model.draftFrameRect.set(QRectF(0, 0, 0.2, 0.2));
        model.laserPoint.set(QPointF(0.1, 0.1));
        model.goToNextSlide();
        QCOMPARE(model.zoomCenter(), std::optional<QPointF>(QPointF(0.2, 0.3)));
        QVERIFY(!model.draftFrameRect());
        QVERIFY(model.laserPoint());  // a move leaves the laser where it is
        model.stageTool.set(StageTool::marker);
        model.goToNextSlide();
        QVERIFY(!model.zoomCenter());
    }

    void freezeHoldsTheOutput()
    {
        auto&& [platform, model] = ModelOnFakes();
        model.replacePlaylist({ten, three});
        model.goToPage(4);
        QVERIFY(slidesSettled(model));
        model.toggleFreeze();
        QVERIFY(model.isFrozen());
        QCOMPARE(model.frozenPageIndex(), 4);
        const auto held = model.incomingSlideImage();
        const double progress = model.transitionProgress();
        model.goToNextSlide();
        model.goToNextSlide();
        model.goToNextSlide();
        QVERIFY(slidesSettled(model));
        QCOMPARE(model.pageIndex(), 7);
        QCOMPARE(model.outputPageIndex(), 4);
        QCOMPARE(model.incomingSlideImage(), held);
        QCOMPARE(model.transitionProgress(), progress);
        QCOMPARE(TestPdf::pageShown(model.previewSlideImage()), 7);  // the stage follows the operator

        model.toggleFreeze();
        QVERIFY(slidesSettled(model));
        QVERIFY(!model.isFrozen());
        QCOMPARE(model.frozenPageIndex(), 4);
        QCOMPARE(model.outputPageIndex(), 7);
        // The output fades from the held page to the operator's page.
        QCOMPARE(TestPdf::pageShown(model.outgoingSlideImage()), 4);
        QCOMPARE(TestPdf::pageShown(model.incomingSlideImage()), 7);
        QCOMPARE(model.transitionProgress(), 0.0);

        // Freezing and unfreezing on the same page starts nothing.
        platform.scheduler->runAll();
        model.toggleFreeze();
        model.toggleFreeze();
        QVERIFY(!model.outgoingSlideImage());
        QCOMPARE(model.transitionProgress(), 1.0);
    }

    void unfreezingWhereTheHeldPageIsGoneCuts()
    {
        // Frozen on page 8 of the long file, the operator pages on into a
        // two-page file: that file has no page 8 to fade from.
        auto&& [platform, model] = ModelOnFakes();
        model.replacePlaylist({ten, two});
        model.goToPage(7);
        model.toggleFreeze();
        model.goToPage(9);
        model.goToNextSlide();
        QVERIFY(slidesSettled(model));
        platform.scheduler->runAll();
        QCOMPARE(model.pageCount(), 2);
        QCOMPARE(model.frozenPageIndex(), 7);
        model.toggleFreeze();
        QVERIFY(slidesSettled(model));
        QVERIFY(!model.isFrozen());
        QVERIFY(!model.outgoingSlideImage());
        QCOMPARE(model.transitionProgress(), 1.0);
        QCOMPARE(TestPdf::pageShown(model.incomingSlideImage()), 0);
    }

    void frozenMoveIntoAnotherFileStillReplacesThePicture()
    {
        auto&& [platform, model] = ModelOnFakes();
        model.replacePlaylist({three, two});
        model.goToPage(2);
        QVERIFY(slidesSettled(model));
        model.toggleFreeze();
        const auto held = model.incomingSlideImage();
        model.goToNextSlide();
        QVERIFY(slidesSettled(model));
        QCOMPARE(model.playlistIndex(), 1);
        QVERIFY(model.incomingSlideImage() != held);
        QCOMPARE(model.incomingSlideImage()->size(), QSize(1440, 1080));
    }

    // Every kind of press asks the engine for the new slide once (the stage
    // and the output share that image) and renders the slide after it ahead
    // once, also when the press loads another file.
    void aPressRendersTheNewSlideOnceAndTheNextOnceAhead_data()
    {
        QTest::addColumn<int>("startEntry");
        QTest::addColumn<int>("startPage");
        QTest::addColumn<QString>("press");
        QTest::addColumn<QString>("shown");      // file:page after the press
        QTest::addColumn<QString>("following");  // file:page rendered ahead
        QTest::newRow("next within a file") << 0 << 0 << "next" << "three:1" << "three:2";
        QTest::newRow("next into the next file") << 0 << 2 << "next" << "two:0" << "two:1";
        QTest::newRow("previous into the previous file") << 1 << 0 << "previous" << "three:2" << "two:0";
        QTest::newRow("previous within a file") << 1 << 1 << "previous" << "two:0" << "two:1";
        QTest::newRow("typed jump") << 0 << 0 << "jump 2" << "three:1" << "three:2";
        QTest::newRow("set item chosen") << 0 << 1 << "choose two" << "two:0" << "two:1";
    }

    void aPressRendersTheNewSlideOnceAndTheNextOnceAhead()
    {
        QFETCH(int, startEntry);
        QFETCH(int, startPage);
        QFETCH(QString, press);
        QFETCH(QString, shown);
        QFETCH(QString, following);
        const QMap<QString, QString> files{{"three", three}, {"two", two}};
        const auto page = [&](const QString& fileAndPage) {
            const QStringList parts = fileAndPage.split(u':');
            return std::make_pair(files.value(parts[0]), parts[1].toInt());
        };

        auto&& [platform, model] = ModelOnFakes();
        model.replacePlaylist({three, two});
        if (startEntry == 1)
            model.selectPlaylistItem(model.playlist()[1].id);
        model.goToPage(startPage);
        QVERIFY(slidesSettled(model));
        platform.scheduler->runAll();  // the fade and the thumbnails are done
        const auto before = model.previewSlideImage();
        const auto [nextFile, nextIndex] = page(following);
        // Two pages forward are rendered ahead too, so the page after the
        // new one may have been asked for before the press.
        const QSize slideBox = model.snapshotSize().toSize();
        const auto slidesAskedAhead = [&requests = *platform.pdf->requests, file = nextFile, index = nextIndex,
                                       slideBox] {
            return std::count_if(requests.begin(), requests.end(), [&](const auto& r) {
                return r.path == file && r.index == index && r.ahead && r.box == slideBox;
            });
        };
        const auto askedAheadBefore = slidesAskedAhead();
        platform.pdf->requests->clear();

        if (press == "next")
            model.goToNextSlide();
        else if (press == "previous")
            model.goToPreviousSlide();
        else if (press == "jump 2")
            typeJump(model, "2");
        else
            model.selectPlaylistItem(model.playlist()[1].id);

        const auto [shownFile, shownIndex] = page(shown);
        QCOMPARE(model.documentURL(), std::optional<QString>(shownFile));
        QCOMPARE(model.pageIndex(), shownIndex);
        // Rendered ahead, the press asks for nothing; else one request serves stage and output.
        QVERIFY(platform.pdf->count(shownFile, shownIndex, false) <= 1);
        // The page after it is asked for ahead once at most, before or after
        // the press (not at all when it was shown already), and is ready.
        QVERIFY(askedAheadBefore + slidesAskedAhead() <= 1);
        QTRY_VERIFY(model.cachedDocument(nextFile)->cached(nextIndex, slideBox));
        QVERIFY(slidesSettled(model));
        // Rendered ahead, the press asks for nothing; else one request serves stage and output.
        QVERIFY(platform.pdf->count(shownFile, shownIndex, false) <= 1);
        QVERIFY(model.previewSlideImage() != before);
        QCOMPARE(model.incomingSlideImage(), model.previewSlideImage());
        // The fade still starts from the slide left.
        QVERIFY(model.outgoingSlideImage());
        QCOMPARE(model.transitionProgress(), 0.0);
    }

    void upcomingWithinAFile()
    {
        auto&& [platform, model] = ModelOnFakes();
        model.replacePlaylist({ten});
        QVERIFY(!model.canGoPrevious());
        model.goToPage(3);
        QVERIFY(model.canGoPrevious());
        QCOMPARE(model.upcomingLabel(), std::optional<QString>("5"));
        const auto upcoming = model.upcomingPage();
        QVERIFY(upcoming);
        QCOMPARE(upcoming->index, 4);
        model.goToPage(9);
        QVERIFY(!model.upcomingPage());
    }
};

QTEST_MAIN(NavigationTest)
#include "tst_Navigation.moc"
