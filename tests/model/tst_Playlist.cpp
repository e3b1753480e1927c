#include "model/AppModel.h"
#include "l10n/L10n.h"
#include "platform/MuPdfEngine.h"
#include "support/FakePlatform.h"
#include "support/GatedEngine.h"
#include "support/ModelFixtures.h"
#include "support/TestPdf.h"

#include <QtTest>

class PlaylistTest : public QObject {
    Q_OBJECT

    static QStringList titles(const AppModel& model)
    {
        QStringList out;
        for (const auto& entry : model.playlist())
            out << entry.title;
        return out;
    }

    // A stroke, a frame and their undo record on page "k", in a saved show.
    static void markUpAndSave(AppModel& model)
    {
        model.strokesByPage.mutate([](auto& map) { map["k"] = {Stroke{}}; });
        model.framesByPage.mutate([](auto& map) { map["k"] = {FrameRect{}}; });
        model.annotationUndo.mutate([](auto& list) { list.push_back(AnnotationUndoRecord::AddedStroke{"k", {}}); });
        model.showFileURL.set(QStringLiteral("/shows/gig.brelvonic"));
    }

private slots:
    void unreadableFilesAreSkippedWithOneAlertEach()
    {
        auto&& [folder, platform, model] = ModelWithFolder();
        const QString a = folder.pdf("a.pdf", 3);
        const QString broken = folder.file("broken.pdf");
        TestPdf::writeNotPdf(broken);
        const QString c = folder.pdf("c.pdf", 2);
        model.replacePlaylist({a, broken, c});
        QVERIFY(slidesSettled(model));
        QCOMPARE(titles(model), (QStringList{"a", "c"}));
        QCOMPARE(platform.dialogs->alerts.size(), std::size_t(1));
        QCOMPARE(platform.dialogs->alerts[0].title, L10n::t("alert.pdf_open"));
        QCOMPARE(platform.dialogs->alerts[0].text, "broken.pdf\n" + L10n::t("pdf.error.not_pdf"));
        QCOMPARE(position(model), "0:0/3");
        QCOMPARE(model.documentURL(), std::optional<QString>(a));
        QVERIFY(model.previewSlideImage());
        QCOMPARE(model.incomingSlideImage(), model.previewSlideImage());
        QCOMPARE(model.transitionProgress(), 1.0);
        // Every URL passed in is noted as recent, in order: the last is newest.
        QCOMPARE(model.recentFiles().value(0), c);
    }

    void unreadableFilesNeverCrashAndLeaveTheSetAsItWas()
    {
        auto&& [folder, platform, model] = ModelWithFolder();
        const QString good = folder.pdf("good.pdf", 2);
        model.replacePlaylist({good});
        model.showFileURL.set(QStringLiteral("/shows/gig.brelvonic"));
        const auto before = model.playlist();

        TestPdf::writeEmpty(folder.file("empty.pdf"));
        QVERIFY(TestPdf::writeTruncated(folder.file("truncated.pdf")));
        QVERIFY(TestPdf::writeEncrypted(folder.file("locked.pdf")));
        TestPdf::writeHugePageCount(folder.file("huge.pdf"));
        QDir(folder.path()).mkdir("folder.pdf");
        // The file's name first, then why, where the engine can tell.
        const std::vector<std::pair<const char*, const char*>> cases{
            {"missing.pdf", nullptr},
            {"empty.pdf", "pdf.error.not_pdf"},
            {"truncated.pdf", "pdf.error.damaged"},
            {"locked.pdf", "pdf.error.password"},
            {"huge.pdf", "pdf.error.damaged"},
            {"folder.pdf", "pdf.error.not_pdf"},
        };
        QStringList bad;
        for (const auto& [name, reason] : cases)
            bad << folder.file(name);

        model.replacePlaylist(bad);
        QCOMPARE(platform.dialogs->alerts.size(), cases.size());
        for (std::size_t i = 0; i < cases.size(); ++i) {
            const QString name = QString::fromLatin1(cases[i].first);
            const QString expected = cases[i].second ? name + u'\n' + L10n::t(cases[i].second) : name;
            QCOMPARE(platform.dialogs->alerts[i].text, expected);
        }
        QCOMPARE(model.playlist(), before);
        QCOMPARE(model.showFileURL(), std::optional<QString>("/shows/gig.brelvonic"));
        model.appendToPlaylist(bad);
        QCOMPARE(model.playlist(), before);
    }

    void replaceKeepsMarkupAndCacheButForgetsShowAndUndo()
    {
        auto&& [folder, platform, model] = ModelWithFolder();
        const QString a = folder.pdf("a.pdf", 3);
        const QString b = folder.pdf("b.pdf", 2);
        model.replacePlaylist({a, b});
        const auto firstDocument = model.document();
        model.goToNextSlide();
        markUpAndSave(model);

        model.replacePlaylist({b, a});
        QCOMPARE(titles(model), (QStringList{"b", "a"}));
        QCOMPARE(position(model), "0:0/2");
        QVERIFY(!model.showFileURL());
        QVERIFY(model.annotationUndo().empty());
        QCOMPARE(model.strokesByPage().size(), std::size_t(1));
        QCOMPARE(model.framesByPage().size(), std::size_t(1));
        // Documents come from the cache, never opened twice.
        QCOMPARE(model.cachedDocument(a), firstDocument);
        model.goToNextSlide();
        model.goToNextSlide();
        QCOMPARE(model.document(), firstDocument);
        // Every file passed in is noted in order, the last one newest.
        QCOMPARE(model.recentFiles(), (QStringList{a, b}));
    }

    void appendKeepsPositionOrLoadsIntoAnEmptySet()
    {
        auto&& [folder, platform, model] = ModelWithFolder();
        const QString a = folder.pdf("a.pdf", 3);
        const QString b = folder.pdf("b.pdf", 2);
        model.appendToPlaylist({a});
        QCOMPARE(model.pageCount(), 3);
        QVERIFY(model.isTimerRunning());
        model.goToPage(2);
        model.appendToPlaylist({b, a});
        QCOMPARE(titles(model), (QStringList{"a", "b", "a"}));
        QCOMPARE(model.playlistIndex(), 0);
        QCOMPARE(model.pageIndex(), 2);
        // The same file twice is two entries with their own ids.
        QVERIFY(model.playlist()[0].id != model.playlist()[2].id);
    }

    void moveKeepsTheCurrentEntryWithoutReloading()
    {
        auto&& [folder, platform, model] = ModelWithFolder();
        model.replacePlaylist({folder.pdf("a.pdf", 2), folder.pdf("b.pdf", 2), folder.pdf("c.pdf", 2), folder.pdf("d.pdf", 2)});
        model.goToPage(1);
        const auto preview = model.previewSlideImage();
        model.movePlaylist({0}, 3);  // a goes before d
        QCOMPARE(titles(model), (QStringList{"b", "c", "a", "d"}));
        QCOMPARE(model.playlistIndex(), 2);
        QCOMPARE(model.pageIndex(), 1);
        QCOMPARE(model.previewSlideImage(), preview);
        model.movePlaylist({1, 3}, 0);  // c and d to the front, in their order
        QCOMPARE(titles(model), (QStringList{"c", "d", "b", "a"}));
        QCOMPARE(model.playlistIndex(), 3);
        model.movePlaylist({0}, 4);  // to the end
        QCOMPARE(titles(model), (QStringList{"d", "b", "a", "c"}));
        QCOMPARE(model.playlistIndex(), 2);
    }

    void selectAndRemove()
    {
        auto&& [folder, platform, model] = ModelWithFolder();
        model.replacePlaylist({folder.pdf("a.pdf", 3), folder.pdf("b.pdf", 4), folder.pdf("c.pdf", 5)});
        std::vector<QUuid> ids;
        for (const auto& e : model.playlist())
            ids.push_back(e.id);
        model.selectPlaylistItem(ids[2]);
        QCOMPARE(model.playlistIndex(), 2);
        QCOMPARE(model.pageCount(), 5);
        model.goToPage(3);
        model.selectPlaylistItem(QUuid::createUuid());  // unknown: nothing
        QCOMPARE(model.pageIndex(), 3);

        // Removing an entry before the current one lands on the entry now at
        // the removed index, page 0.
        model.removePlaylistItem(ids[0]);
        QCOMPARE(titles(model), (QStringList{"b", "c"}));
        QCOMPARE(position(model), "0:0/4");
        model.removePlaylistItem(ids[2]);
        QCOMPARE(model.playlistIndex(), 0);

        model.isBlackout.set(true);
        model.toggleFreeze();
        model.removePlaylistItem(ids[1]);
        QVERIFY(model.playlist().empty());
        QVERIFY(!model.document());
        QVERIFY(!model.documentURL());
        QVERIFY(!model.isBlackout());
        QVERIFY(!model.isFrozen());
        QVERIFY(!model.previewSlideImage());
        QCOMPARE(model.pageCount(), 0);
    }

    void removingAnotherEntryStillLandsOnPageZeroAtTheRemovedIndex()
    {
        auto&& [folder, platform, model] = ModelWithFolder();
        model.replacePlaylist({folder.pdf("a.pdf", 3), folder.pdf("b.pdf", 4), folder.pdf("c.pdf", 5), folder.pdf("d.pdf", 2)});
        const QUuid c = model.playlist()[2].id;
        const QUuid d = model.playlist()[3].id;
        model.goToPage(2);
        // The current entry is a, before the removed one: the operator still
        // lands on the entry now at the removed index.
        model.removePlaylistItem(c);
        QCOMPARE(titles(model), (QStringList{"a", "b", "d"}));
        QCOMPARE(position(model), "2:0/2");
        QCOMPARE(model.transitionProgress(), 1.0);
        QVERIFY(!model.outgoingSlideImage());
        // Removing the last entry lands on the one now last.
        model.goToPage(1);
        model.removePlaylistItem(d);
        QCOMPARE(position(model), "1:0/4");
        model.removePlaylistItem(QUuid::createUuid());  // unknown: nothing
        QCOMPARE(titles(model), (QStringList{"a", "b"}));
    }

    void selectingMovesIntoTheEntryWithAFade()
    {
        auto&& [folder, platform, model] = ModelWithFolder();
        model.replacePlaylist({folder.pdf("a.pdf", 3), folder.pdf("b.pdf", 4)});
        model.goToPage(2);
        QVERIFY(slidesSettled(model));
        platform.scheduler->runAll();
        // Selecting the current entry does nothing: no reload, no fade.
        model.selectPlaylistItem(model.playlist()[0].id);
        QCOMPARE(model.pageIndex(), 2);
        QCOMPARE(model.transitionProgress(), 1.0);
        model.selectPlaylistItem(model.playlist()[1].id);
        QCOMPARE(position(model), "1:0/4");
        QVERIFY(slidesSettled(model));
        // The fade starts from the page the output showed in the old file.
        QCOMPARE(TestPdf::pageShown(model.outgoingSlideImage()), 2);
        QCOMPARE(TestPdf::pageShown(model.incomingSlideImage()), 0);
        QCOMPARE(model.transitionProgress(), 0.0);
    }

    void anEntryWhoseFileIsGoneLoadsNothingAndWarnsNobody()
    {
        // An entry can outlive its file (a show made elsewhere): moving into
        // it keeps the open document and raises no alert.
        auto&& [folder, platform, model] = ModelWithFolder();
        model.replacePlaylist({folder.pdf("a.pdf", 3)});
        const auto document = model.document();
        const QString gone = folder.file("gone.pdf");
        model.playlist.mutate([&](auto& list) {
            list.push_back(PlaylistEntry{QUuid::createUuid(), gone, "gone", 5, {}, {}});
        });
        model.goToPage(2);
        model.goToNextSlide();
        QCOMPARE(model.playlistIndex(), 1);
        QCOMPARE(model.document(), document);
        QCOMPARE(model.pageCount(), 3);
        QVERIFY(platform.dialogs->alerts.empty());
    }

    void closeResetsThePresentationButKeepsTimerAndMarkup()
    {
        auto&& [folder, platform, model] = ModelWithFolder();
        const QString a = folder.pdf("a.pdf", 3);
        model.replacePlaylist({a, folder.pdf("b.pdf", 2)});
        const auto firstDocument = model.document();
        QVERIFY(slidesSettled(model));
        model.goToNextSlide();  // a fade is running
        QVERIFY(slidesSettled(model));
        QCOMPARE(model.transitionProgress(), 0.0);
        model.toggleFreeze();
        model.goToNextSlide();
        model.isBlackout.set(true);
        markUpAndSave(model);
        model.stageTool.set(StageTool::zoom);
        model.laserPoint.set(QPointF(0.5, 0.5));
        model.zoomCenter.set(QPointF(0.5, 0.5));
        model.draftStroke.set(Stroke{});
        model.draftFrameRect.set(QRectF(0, 0, 0.1, 0.1));
        model.jumpBuffer.set("12");

        model.closeDocument();
        QVERIFY(model.playlist().empty());
        QCOMPARE(model.playlistIndex(), 0);
        QVERIFY(!model.document() && !model.documentURL());
        QCOMPARE(model.pageCount(), 0);
        QCOMPARE(model.pageIndex(), 0);
        QVERIFY(model.thumbnails().empty());
        QVERIFY(!model.incomingSlideImage() && !model.outgoingSlideImage() && !model.previewSlideImage());
        QVERIFY(!model.isFrozen() && !model.isBlackout());
        QCOMPARE(model.frozenPageIndex(), 0);
        QCOMPARE(model.stageTool(), StageTool::pointer);
        QVERIFY(!model.laserPoint() && !model.zoomCenter() && !model.draftStroke() && !model.draftFrameRect());
        QCOMPARE(model.jumpBuffer(), QString());
        QVERIFY(!model.showFileURL());
        QVERIFY(model.annotationUndo().empty());
        QCOMPARE(model.showTitle(), QStringLiteral("PDF Brelvonic"));
        // Kept: the timer and the markup of every page.
        QVERIFY(model.isTimerRunning());
        QCOMPARE(model.strokesByPage().size(), std::size_t(1));
        QCOMPARE(model.framesByPage().size(), std::size_t(1));
        // Neither the cancelled fade nor the closed set's thumbnails come back.
        platform.scheduler->advance(0.1);
        QCOMPARE(model.transitionProgress(), 1.0);
        platform.scheduler->runAll();
        QVERIFY(model.thumbnails().empty());
        QVERIFY(!model.incomingSlideImage() && !model.outgoingSlideImage());
        QCOMPARE(model.transitionProgress(), 1.0);
        QVERIFY(!model.needsLiveOutput());
        // The document cache was emptied: the file is opened afresh.
        model.replacePlaylist({a});
        QVERIFY(model.document());
        QVERIFY(model.document() != firstDocument);
    }

    void entriesCompareByAllSixFieldsAndHashConsistently()
    {
        const PlaylistEntry base{QUuid::createUuid(), "/decks/a.pdf", "a", 3, {}, {}};
        PlaylistEntry noted = base;
        noted.notesByPage[1] = QStringLiteral("Lights down");
        PlaylistEntry cued = base;
        cued.cues.push_back(CueBookmark{QUuid::createUuid(), 2, QStringLiteral("Chorus")});
        PlaylistEntry same = base;
        QCOMPARE(same, base);
        QCOMPARE(qHash(same), qHash(base));
        QVERIFY(!(noted == base) && !(cued == base));
        QSet<PlaylistEntry> set{base, same, noted, cued};
        QCOMPARE(set.size(), 3);
    }

    void pageKeyAndGlobalIndex()
    {
        auto&& [folder, platform, model] = ModelWithFolder();
        QCOMPARE(model.pageKey(), QStringLiteral("none-0"));
        model.replacePlaylist({folder.pdf("a.pdf", 10), folder.pdf("b.pdf", 4), folder.pdf("c.pdf", 5)});
        model.playlist.mutate([](auto& list) { list[0].id = QUuid("{3f2504e0-4f89-11d3-9a0c-0305e82c3301}"); });
        QCOMPARE(model.pageKey(), QStringLiteral("3F2504E0-4F89-11D3-9A0C-0305E82C3301-0"));
        model.selectPlaylistItem(model.playlist()[2].id);
        model.goToPage(2);
        QCOMPARE(model.globalPageIndex(), 16);
        QVERIFY(model.pageKey().endsWith("-2"));
    }

    void titles_()
    {
        auto&& [folder, platform, model] = ModelWithFolder();
        QCOMPARE(model.showTitle(), QStringLiteral("PDF Brelvonic"));
        QCOMPARE(model.fileTitle(), L10n::t("file.none"));
        model.replacePlaylist({folder.pdf("Act 1.final.pdf", 2)});
        QCOMPARE(model.showTitle(), L10n::t("show.new"));
        QCOMPARE(model.fileTitle(), QStringLiteral("Act 1.final"));
        // The entry's title wins over the file name.
        model.playlist.mutate([](auto& list) { list[0].title = "Overture"; });
        QCOMPARE(model.fileTitle(), QStringLiteral("Overture"));
        model.showFileURL.set(folder.file("gig.brelvonic"));
        QCOMPARE(model.showTitle(), QStringLiteral("gig"));
        model.showFileURL.set(folder.file("Tour 2026.v2.brelvonic"));
        QCOMPARE(model.showTitle(), QStringLiteral("Tour 2026.v2"));

        // A document without an entry is named by its file, the last
        // extension dropped.
        auto&& [other, bare] = ModelOnFakes();
        bare.documentURL.set(QStringLiteral("/decks/Finale.v3.pdf"));
        QCOMPARE(bare.fileTitle(), QStringLiteral("Finale.v3"));
        QCOMPARE(bare.showTitle(), QStringLiteral("PDF Brelvonic"));
    }

    void thumbnailsArriveInOrderInBatchesOfSix()
    {
        // The workers answer newest first; the strip still fills in page order.
        TestFolder folder;
        auto&& [platform, gate, model] = ModelOnEngine<GatedEngine>();
        model.replacePlaylist({folder.pdf("twenty.pdf", 20, TestPdf::standard)});
        QVERIFY(model.thumbnails().empty());  // nothing rendered inside the load
        QCOMPARE(gate->waiting(true), 0);     // nor asked for
        for (const int batch : {6, 12, 18, 20}) {
            platform.scheduler->runNext();  // the model's turn: it stores what came and asks for more
            gate->release(true);
            QTRY_COMPARE(static_cast<int>(model.thumbnails().size()), batch);
            int expected = 0;
            for (const auto& [index, image] : model.thumbnails())
                QCOMPARE(index, expected++);
            // One batch at a time: each gives way to other work before the next.
            QCOMPARE(platform.scheduler->queued(), std::size_t(batch < 20 ? 1 : 0));
        }
        for (const auto& [index, image] : model.thumbnails()) {
            QCOMPARE(image->size(), QSize(320, 240));
            QCOMPARE(TestPdf::pageShown(image), index);
        }
    }

    void newSetCancelsTheOldRender()
    {
        TestFolder folder;
        auto&& [platform, gate, model] = ModelOnEngine<GatedEngine>();
        model.replacePlaylist({folder.pdf("a.pdf", 20)});
        platform.scheduler->runPending();
        QVERIFY(gate->waiting(true) > 0);
        model.replacePlaylist({folder.pdf("b.pdf", 3, TestPdf::standard)});
        QCOMPARE(gate->waiting(true), 0);  // the old file's are cancelled
        gate->letThrough = true;
        gate->release();
        QVERIFY(thumbnailsDone(model, *platform.scheduler));
        QCOMPARE(model.thumbnails().size(), std::size_t(3));
        QCOMPARE(model.thumbnails().at(0)->size(), QSize(320, 240));
    }

    void renderStopsWhenTheModelIsGone()
    {
        TestFolder folder;
        const QString deck = folder.pdf("a.pdf", 20);
        FakePlatform platform;
        auto gate = std::make_shared<GatedEngine>();
        PlatformServices services = platform.services();
        services.pdf = gate;
        {
            // Gone before the render began: it never starts.
            AppModel model(services);
            model.replacePlaylist({deck});
        }
        platform.scheduler->runAll();
        QCOMPARE(gate->waiting(true), 0);
        {
            // Gone while its thumbnails are asked for: they are called off.
            AppModel model(services);
            model.replacePlaylist({deck});
            platform.scheduler->runPending();
            QVERIFY(gate->waiting(true) > 0);
        }
        QCOMPARE(gate->waiting(true), 0);
        QCOMPARE(gate->waiting(false), 0);
        gate->release();
        platform.scheduler->runAll();
        QCoreApplication::processEvents();
        QCOMPARE(platform.scheduler->queued(), std::size_t(0));
    }
};

QTEST_MAIN(PlaylistTest)
#include "tst_Playlist.moc"
