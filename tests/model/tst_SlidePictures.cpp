#include "model/AppModel.h"
#include "support/GatedEngine.h"
#include "support/ModelFixtures.h"
#include "support/TestPdf.h"

#include <QtTest>

using TestPdf::pageShown;

namespace {

const QSize slide(1920, 1080);

}

class SlidePicturesTest : public QObject {
    Q_OBJECT

    TestFolder folder;

private slots:
    void pressesActAtOnceWhileTheWorkersAreBusy()
    {
        auto&& [platform, gate, model] = ModelOnEngine<GatedEngine>();
        gate->letThrough = true;
        model.replacePlaylist({folder.pdf("a.pdf", 8), folder.pdf("b.pdf", 3)});
        QVERIFY(slidesSettled(model));
        const ImagePtr first = model.incomingSlideImage();
        QCOMPARE(pageShown(first), 0);

        // The workers hold everything from here: the thumbnail pass, the
        // renders ahead and the slides the presses ask for.
        gate->letThrough = false;
        platform.scheduler->runPending();
        QVERIFY(gate->waiting(true) > 0);
        model.appendJumpDigit("5");
        model.commitJump();
        QCOMPARE(model.pageIndex(), 4);
        QVERIFY(model.isAwaitingSlide());
        // The output keeps its picture until the new one is ready: no stand-in, no black.
        QCOMPARE(model.incomingSlideImage(), first);
        QCOMPARE(model.transitionProgress(), 1.0);
        for (int i = 0; i < 4; ++i)
            model.goToNextSlide();
        QCOMPARE(position(model), QStringLiteral("1:0/3"));
        QCOMPARE(model.incomingSlideImage(), first);
        QCOMPARE(gate->waitingCalls, 0);

        gate->release();
        QVERIFY(slidesSettled(model));
        // Then it fades as usual, out of what it showed into the latest page.
        QCOMPARE(pageShown(model.incomingSlideImage()), 0);
        QCOMPARE(model.incomingSlideImage()->size(), slide);
        QVERIFY(model.incomingSlideImage() != first);
        QCOMPARE(model.outgoingSlideImage(), first);
        QCOMPARE(model.transitionProgress(), 0.0);
        QCOMPARE(model.previewSlideImage(), model.incomingSlideImage());
        QCOMPARE(gate->waitingCalls, 0);
    }

    void theStageShowsTheThumbnailUntilTheSlideIsReady()
    {
        auto&& [platform, gate, model] = ModelOnEngine<GatedEngine>();
        gate->letThrough = true;
        model.transitionStyle.set(TransitionStyle::none);
        model.replacePlaylist({folder.pdf("thumbs.pdf", 5)});
        QVERIFY(slidesSettled(model));
        QVERIFY(thumbnailsDone(model, *platform.scheduler));
        gate->letThrough = false;
        model.goToPage(4);
        QCOMPARE(model.previewSlideImage(), model.thumbnails().at(4));
        QCOMPARE(pageShown(model.incomingSlideImage()), 0);
        gate->release();
        QVERIFY(slidesSettled(model));
        QCOMPARE(pageShown(model.previewSlideImage()), 4);
        QCOMPARE(model.previewSlideImage()->size(), slide);
        QCOMPARE(model.incomingSlideImage(), model.previewSlideImage());
        QCOMPARE(model.transitionProgress(), 1.0);  // a cut, once ready
    }

    void rendersAheadWhatMayComeNext()
    {
        auto&& [platform, engine, model] = ModelOnEngine<MuPdfEngine>();
        const QString a = folder.pdf("ahead-a.pdf", 5);
        const QString b = folder.pdf("ahead-b.pdf", 6);
        model.replacePlaylist({a, b});
        const PdfDocumentPtr docA = model.document();
        model.selectPlaylistItem(model.playlist()[1].id);
        QVERIFY(slidesSettled(model));
        // Across the boundary: from the first page, the last page of the file before.
        QTRY_VERIFY(docA->cached(4, slide));
        model.playlist.mutate([](auto& list) {
            list[1].cues.push_back(CueBookmark{QUuid::createUuid(), 4, QStringLiteral("Finale")});
        });
        model.goToPage(1);
        model.appendJumpDigit("6");  // page 6, not yet entered
        struct Case {
            const char* what;
            int page;
        };
        const std::vector<Case> cases{
            {"next", 2},
            {"previous", 0},
            {"typed", 5},
            {"cue", 4},
            {"two forward", 3},
        };
        for (const auto& c : cases) {
            const PdfDocumentPtr doc = model.document();
            QTRY_VERIFY2(doc->cached(c.page, slide), c.what);
        }
        // Enter takes the page rendered ahead: the stage has it at once.
        model.commitJump();
        QVERIFY(!model.isAwaitingSlide());
        QCOMPARE(pageShown(model.previewSlideImage()), 5);
        QCOMPARE(model.previewSlideImage()->size(), slide);

        // Two forward from a file's last page is the next file's second page.
        const QString c = folder.pdf("ahead-c.pdf", 3);
        const QString d = folder.pdf("ahead-d.pdf", 4);
        model.replacePlaylist({c, d});
        model.goToPage(2);
        const PdfDocumentPtr docD = model.cachedDocument(d);
        QTRY_VERIFY(docD->cached(0, slide));
        QTRY_VERIFY(docD->cached(1, slide));
    }

    void anEntryFarBackComesBackWithItsCuesAndNotes()
    {
        auto&& [platform, engine, model] = ModelOnEngine<MuPdfEngine>();
        QStringList files;
        for (int i = 0; i < 6; ++i)
            files << folder.pdf(QStringLiteral("back%1.pdf").arg(i), 3);
        model.replacePlaylist(files);
        model.addBookmark(QStringLiteral("Chorus"), 1);
        model.goToPage(2);
        model.setCurrentNote(QStringLiteral("Lights down"));
        QVERIFY(slidesSettled(model));
        const PdfDocumentPtr first = model.document();
        QVERIFY(first->cached(2, slide));
        while (model.playlistIndex() < 5) {
            model.goToNextSlide();
            QVERIFY(slidesSettled(model));
        }
        // Far behind: its pictures and its parsed pages are gone.
        QVERIFY(!first->cached(2, slide));
        QTRY_VERIFY(engine->usage().parsedDocuments <= 3 + MuPdfEngine::spareDocuments);
        while (model.playlistIndex() > 0) {
            model.goToPreviousSlide();
            QVERIFY(slidesSettled(model));
        }
        QCOMPARE(position(model), QStringLiteral("0:2/3"));
        QCOMPARE(model.document(), first);  // the same document, never opened twice
        QCOMPARE(pageShown(model.incomingSlideImage()), 2);
        QCOMPARE(model.currentNote(), QStringLiteral("Lights down"));
        model.goToPreviousCue();
        QVERIFY(slidesSettled(model));
        QCOMPARE(model.pageIndex(), 1);
        QCOMPARE(pageShown(model.previewSlideImage()), 1);
    }

    void aLongWalkStaysWithinTheEngineCaps()
    {
        auto&& [platform, engine, model] = ModelOnEngine<MuPdfEngine>();
        QStringList files;
        for (int i = 0; i < 50; ++i)
            files << folder.pdf(QStringLiteral("walk%1.pdf").arg(i), 3);
        model.replacePlaylist(files);
        int presses = 0;
        auto withinCaps = [&engine = engine] {
            const auto usage = engine->usage();
            return usage.slideBytes <= MuPdfEngine::slideBudget
                && usage.thumbnailBytes <= MuPdfEngine::thumbnailBudget && usage.nearDocuments <= 3;
        };
        // Files are let go on a worker, soon after the position leaves them.
        auto parsedWithinCaps = [&engine = engine] {
            const auto usage = engine->usage();
            return usage.parsedDocuments <= 3 + MuPdfEngine::spareDocuments
                && usage.lists <= (3 + MuPdfEngine::spareDocuments) * MuPdfEngine::listsPerDocument;
        };
        while (model.canGoNext()) {
            model.goToNextSlide();
            platform.scheduler->runPending();  // thumbnails too
            QVERIFY(slidesSettled(model));
            QVERIFY2(withinCaps(), qPrintable(QString::number(presses)));
            if (++presses % 25 == 0)
                QTRY_VERIFY(parsedWithinCaps());
        }
        QCOMPARE(presses, 149);
        QCOMPARE(pageShown(model.previewSlideImage()), 2);
    }
};

QTEST_MAIN(SlidePicturesTest)
#include "tst_SlidePictures.moc"
