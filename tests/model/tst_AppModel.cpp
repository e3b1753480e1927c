#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "support/FakePlatform.h"
#include "support/ModelFixtures.h"

#include <QtTest>

namespace {
// The operator's laptop, the main display, and a projector beside it.
const PlatformScreen laptop{7, "Laptop", QRectF(0, 0, 1440, 900), 1.0};
const PlatformScreen projector{9, "Projector", QRectF(1440, 0, 1920, 1080), 1.0};
}

class AppModelTest : public QObject {
    Q_OBJECT

private slots:
    void aNewModelHoldsTheInitialValuesAndDidNothing()
    {
        auto&& [platform, model] = ModelOnFakes();
        QVERIFY(!model.document() && !model.documentURL());
        QCOMPARE(model.pageIndex(), 0);
        QCOMPARE(model.pageCount(), 0);
        QVERIFY(model.thumbnails().empty() && model.displays().empty());
        QVERIFY(!model.selectedDisplayID());
        QCOMPARE(model.aspect(), AspectMode::fillDisplay);
        QCOMPARE(model.contentFit(), ContentFit::contain);
        QCOMPARE(model.customWidth(), 1920);
        QCOMPARE(model.customHeight(), 1080);
        QVERIFY(!model.isBlackout() && !model.isFrozen() && !model.isOutputVisible());
        QCOMPARE(model.frozenPageIndex(), 0);
        QVERIFY(model.outputAlwaysOnTop());
        QVERIFY(!model.laserPoint() && !model.clickerTrusted());
        QCOMPARE(model.outputPixelSize(), QSizeF(0, 0));
        QVERIFY(model.isSyphonEnabled() && !model.isSyphonPublishing());
        QCOMPARE(model.syphonFrameSize(), QSizeF(0, 0));
        QVERIFY(model.recentFiles().isEmpty() && model.playlist().empty());
        QCOMPARE(model.playlistIndex(), 0);
        QCOMPARE(model.transitionStyle(), TransitionStyle::fade);
        QCOMPARE(model.transitionDuration(), 0.45);
        QCOMPARE(model.transitionProgress(), 1.0);
        QVERIFY(!model.outgoingSlideImage() && !model.incomingSlideImage() && !model.previewSlideImage());
        QVERIFY(model.hideOutputCursor());
        QCOMPARE(model.interfaceLanguage(), AppLanguages::detected());
        QVERIFY(!model.timerStartedAt() && !model.isTimerRunning());
        QCOMPARE(model.timerAccumulated(), 0.0);
        QCOMPARE(model.plannedDuration(), 0.0);
        QCOMPARE(model.jumpBuffer(), QString());
        QCOMPARE(model.stageTool(), StageTool::pointer);
        QCOMPARE(model.zoomScale(), 2.2);
        QVERIFY(!model.zoomCenter() && !model.draftStroke() && !model.draftFrameRect());
        QVERIFY(model.strokesByPage().empty() && model.framesByPage().empty());
        QCOMPARE(model.markColor(), (MarkColor{1.0, 0.16, 0.12}));
        QVERIFY(model.annotationUndo().empty());
        QVERIFY(!model.showFileURL());
        // Creation has no side effects; start does the work.
        QVERIFY(platform.preferences->writes.empty());
        QVERIFY(platform.activity->reasons.empty());
        QVERIFY(!platform.screens->handler);
        QCOMPARE(platform.scheduler->queued(), std::size_t(0));
        QVERIFY(platform.dialogs->alerts.empty());
    }

    void startWithOneDisplayKeepsTheOutputHidden()
    {
        FakePlatform platform;
        platform.screens->list = {laptop};
        platform.screens->mainId = 7;
        platform.recents->items = {"/a.pdf", "/b.pdf"};
        AppModel model(platform.services());
        model.start();
        QVERIFY(!model.isOutputVisible());
        QCOMPARE(model.displays().size(), std::size_t(1));
        QCOMPARE(model.selectedDisplayID(), std::optional<uint32_t>(7));
        QCOMPARE(model.recentFiles(), (QStringList{"/a.pdf", "/b.pdf"}));
        QCOMPARE(platform.activity->reasons, (std::vector<QString>{"Live clicker and Syphon output"}));
    }

    void startWithTwoDisplaysShowsTheOutputOnTheOtherOne()
    {
        FakePlatform platform;
        platform.screens->list = {laptop, projector};
        platform.screens->mainId = 7;
        AppModel model(platform.services());
        model.start();
        QVERIFY(model.isOutputVisible());
        QCOMPARE(model.selectedDisplayID(), std::optional<uint32_t>(9));
    }

    void startRestoresPreferencesAfterTheFirstDisplayRefresh()
    {
        // The remembered display is not connected: the refresh picks the
        // projector first, then the preferences put the remembered one back.
        // Done the other way round the remembered choice would be lost at
        // every launch without that display.
        FakePlatform platform;
        platform.screens->list = {laptop, projector};
        platform.screens->mainId = 7;
        platform.preferences->values["selectedDisplayID"] = 42;
        platform.preferences->values["isSyphonEnabled"] = false;
        AppModel model(platform.services());
        model.start();
        QCOMPARE(model.selectedDisplayID(), std::optional<uint32_t>(42));
        QVERIFY(!model.isSyphonEnabled());
    }

    void startTwiceHoldsOneActivityAndOneObserver()
    {
        FakePlatform platform;
        platform.screens->list = {laptop};
        AppModel model(platform.services());
        model.start();
        model.start();
        QCOMPARE(platform.activity->reasons.size(), std::size_t(1));
        QCOMPARE(platform.screens->handlersSet, 1);
        platform.screens->changed();
        QCOMPARE(platform.scheduler->queued(), std::size_t(1));
    }

    void displayChangesAreFollowedOnTheMainThread()
    {
        FakePlatform platform;
        platform.screens->list = {laptop, projector};
        platform.screens->mainId = 7;
        std::optional<AppModel> model(std::in_place, platform.services());
        model->start();
        // The projector is unplugged: the refresh comes on a later turn.
        platform.screens->list.pop_back();
        platform.screens->changed();
        QCOMPARE(model->displays().size(), std::size_t(2));
        platform.scheduler->runPending();
        QCOMPARE(model->displays().size(), std::size_t(1));
        QCOMPARE(model->selectedDisplayID(), std::optional<uint32_t>(7));
        // A change reported after the model is gone does nothing.
        platform.screens->changed();
        model.reset();
        platform.scheduler->runPending();
    }

    void languageIsWrittenOnEveryAssignment()
    {
        auto&& [platform, model] = ModelOnFakes();
        const AppLanguage current = model.interfaceLanguage();
        int told = 0;
        auto tracker = obs::withTracking([&model = model] { (void)model.interfaceLanguage(); }, [&] { ++told; });
        model.interfaceLanguage.set(current);
        QCOMPARE(told, 0);
        QCOMPARE(platform.preferences->values.value("interfaceLanguage").toString(), appLanguages.rawValue(current));
        model.interfaceLanguage.set(AppLanguage::german);
        QCOMPARE(told, 1);
        QCOMPARE(platform.preferences->values.value("interfaceLanguage").toString(), QStringLiteral("de"));

        // A scope that only looks up a text is told of a switch, and the text
        // it then reads is in the new language.
        QString text;
        int relabelled = 0;
        const auto read = [&] { text = L10n::t(QStringLiteral("reset")); };
        auto textTracker = obs::withTracking(read, [&] { ++relabelled; });
        QCOMPARE(text, QStringLiteral("Zur\u00FCcksetzen"));
        model.interfaceLanguage.set(AppLanguage::english);
        QCOMPARE(relabelled, 1);
        read();
        QCOMPARE(text, QStringLiteral("Reset"));
    }

    void rawValuesDecodeOnlyKnownCases()
    {
        QCOMPARE(aspectModes.fromRaw(u"r16x9"), std::optional<AspectMode>(AspectMode::r16x9));
        QVERIFY(!aspectModes.fromRaw(u"16x9"));
        QCOMPARE(stageTools.rawValue(StageTool::zoom), QStringLiteral("zoom"));
        QVERIFY(!stageTools.fromRaw(u"Zoom"));
        QCOMPARE(appLanguages.fromRaw(u"zh-Hans"), std::optional<AppLanguage>(AppLanguage::chinese));
        QCOMPARE(aspectModes.all().size(), std::size_t(9));
        QCOMPARE(aspectModes.all().front(), AspectMode::fillDisplay);
    }
};

QTEST_MAIN(AppModelTest)
#include "tst_AppModel.moc"
