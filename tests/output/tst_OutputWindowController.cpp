#include "output/OutputContentView.h"
#include "output/OutputWindow.h"
#include "output/OutputWindowController.h"
#include "support/ModelFixtures.h"

#include <QtTest>

namespace {

const PlatformScreen laptop{1, QStringLiteral("Laptop"), QRectF(0, 0, 1440, 900), 2};
const PlatformScreen projector{2, QStringLiteral("Projector"), QRectF(1440, 0, 1920, 1200), 1.5};
const PlatformScreen monitor{3, QStringLiteral("Monitor"), QRectF(-1280, 0, 1280, 1024), 1};

// A model whose platform makes a real output window controller.
struct OutputSession {
    FakePlatform platform;
    std::unique_ptr<AppModel> model;

    explicit OutputSession(std::vector<PlatformScreen> screens, std::optional<uint32_t> mainId = 1)
    {
        platform.screens->list = std::move(screens);
        platform.screens->mainId = mainId;
        PlatformServices services = platform.services();
        services.makeOutputWindowController = [] { return std::make_unique<OutputWindowController>(); };
        model = std::make_unique<AppModel>(services);
    }
    OutputWindowController& controller() const { return *model->outputController(); }
    OutputWindow* window() const { return controller().window(); }
    // Lets the change tracking run its scheduled synchronisation.
    void settle() const { platform.scheduler->runPending(); }
    int preferenceWrites() const
    {
        return int(std::count(platform.preferences->writes.begin(), platform.preferences->writes.end(),
                              QStringLiteral("aspect")));
    }
};

}

class OutputWindowControllerTest : public QObject {
    Q_OBJECT

private slots:
    // The selected display when it is connected, else the first that is not
    // the main one, else the main one; the first when nothing is main.
    void targetScreenFollowsSelectionThenNonMainThenMain_data()
    {
        QTest::addColumn<std::vector<PlatformScreen>>("screens");
        QTest::addColumn<std::optional<uint32_t>>("mainId");
        QTest::addColumn<std::optional<uint32_t>>("selected");
        QTest::addColumn<std::optional<uint32_t>>("expected");
        using S = std::vector<PlatformScreen>;
        using Id = std::optional<uint32_t>;
        QTest::newRow("selected main") << S{laptop, projector} << Id(1) << Id(1) << Id(1);
        QTest::newRow("selected projector") << S{laptop, projector, monitor} << Id(1) << Id(3) << Id(3);
        QTest::newRow("none selected") << S{laptop, projector} << Id(1) << Id() << Id(2);
        QTest::newRow("selected unplugged") << S{laptop, monitor} << Id(1) << Id(2) << Id(3);
        QTest::newRow("only the main one") << S{laptop} << Id(1) << Id(2) << Id(1);
        QTest::newRow("no main screen") << S{projector, laptop} << Id() << Id() << Id(2);
        QTest::newRow("no screens") << S{} << Id(1) << Id(2) << Id();
    }
    void targetScreenFollowsSelectionThenNonMainThenMain()
    {
        QFETCH(std::vector<PlatformScreen>, screens);
        QFETCH(std::optional<uint32_t>, mainId);
        QFETCH(std::optional<uint32_t>, selected);
        QFETCH(std::optional<uint32_t>, expected);
        OutputSession s(screens, mainId);
        s.model->selectedDisplayID.set(selected);
        const auto target = OutputWindowController::targetScreen(*s.model);
        QCOMPARE(target ? target->displayId : std::nullopt, expected);
    }

    // Start-up with two displays shows the output on the projector: its
    // rectangle, its pixel size at the projector's scale, the preferences
    // saved; a sync with nothing changed applies nothing again.
    void startShowsTheOutputOnTheProjector()
    {
        OutputSession s({laptop, projector});
        s.model->aspect.set(AspectMode::r16x9);
        s.model->start();
        s.settle();
        QVERIFY(s.model->isOutputVisible());
        QVERIFY(s.controller().wasVisible());
        QVERIFY(s.window() && s.window()->isVisible());
        QCOMPARE(s.window()->geometry(), QRect(1440, 60, 1920, 1080));
        QCOMPARE(s.window()->objectName(), QStringLiteral("pdf-brelvonic-output"));
        QCOMPARE(s.window()->windowTitle(), QStringLiteral("Output — PDF Brelvonic"));
        QCOMPARE(s.window()->content()->geometry(), QRect(0, 0, 1920, 1080));
        QCOMPARE(s.model->outputPixelSize(), QSizeF(2880, 1620));
        QVERIFY(s.window()->testAttribute(Qt::WA_ShowWithoutActivating));
        const int writes = s.preferenceWrites();
        QVERIFY(writes >= 1);

        s.model->syncOutput();
        s.model->isBlackout.set(true);
        s.settle();
        QCOMPARE(s.preferenceWrites(), writes);
    }

    // Each tracked setting leads to exactly one new application; the custom
    // size re-applies even while it does not change the rectangle.
    void trackedSettingsReapplyOnce_data()
    {
        QTest::addColumn<std::function<void(AppModel&)>>("change");
        QTest::addColumn<bool>("reapplies");
        using F = std::function<void(AppModel&)>;
        QTest::newRow("custom width under full display") << F([](AppModel& m) { m.customWidth.set(1280); }) << true;
        QTest::newRow("custom height under full display") << F([](AppModel& m) { m.customHeight.set(720); }) << true;
        QTest::newRow("always on top") << F([](AppModel& m) { m.outputAlwaysOnTop.set(false); }) << true;
        QTest::newRow("hide cursor") << F([](AppModel& m) { m.hideOutputCursor.set(false); }) << true;
        QTest::newRow("aspect") << F([](AppModel& m) { m.aspect.set(AspectMode::r1x1); }) << true;
        QTest::newRow("selected display") << F([](AppModel& m) { m.selectedDisplayID.set(1); }) << true;
        // Language alone: synchronised, but the geometry stands.
        QTest::newRow("language") << F([](AppModel& m) { m.interfaceLanguage.set(AppLanguage::german); }) << false;
        QTest::newRow("untracked") << F([](AppModel& m) { m.contentFit.set(ContentFit::cover); }) << false;
    }
    void trackedSettingsReapplyOnce()
    {
        QFETCH(std::function<void(AppModel&)>, change);
        QFETCH(bool, reapplies);
        OutputSession s({laptop, projector});
        s.model->start();
        s.settle();
        const int writes = s.preferenceWrites();
        const QRect before = s.window()->geometry();

        change(*s.model);
        s.settle();
        QCOMPARE(s.preferenceWrites(), writes + (reapplies ? 1 : 0));
        if (QTest::currentDataTag() == QByteArrayLiteral("custom width under full display"))
            QCOMPARE(s.window()->geometry(), before);
        // Armed again: a second change is seen as well.
        s.model->customWidth.set(1111);
        s.settle();
        QCOMPARE(s.preferenceWrites(), writes + (reapplies ? 2 : 1));
    }

    // The title follows the language only with the next new signature.
    void titleWaitsForTheNextSignature()
    {
        OutputSession s({laptop, projector});
        s.model->start();
        s.settle();
        s.model->interfaceLanguage.set(AppLanguage::german);
        s.settle();
        QCOMPARE(s.window()->windowTitle(), QStringLiteral("Output — PDF Brelvonic"));
        s.model->aspect.set(AspectMode::r16x10);
        s.settle();
        QVERIFY(s.window()->windowTitle() != QStringLiteral("Output — PDF Brelvonic"));
        QVERIFY(!s.window()->windowTitle().isEmpty());
    }

    // Full display: not movable; a ratio: movable by its background. On top
    // and the pointer follow their settings at once.
    void windowBehaviourFollowsTheSettings()
    {
        OutputSession s({laptop, projector});
        s.model->start();
        s.settle();
        OutputWindow* w = s.window();
        QVERIFY(!w->isMovableByBackground());
        QVERIFY(w->isAlwaysOnTop());
        QVERIFY(w->hidesCursor());
        QCOMPARE(w->content()->cursor().shape(), Qt::BlankCursor);

        s.model->aspect.set(AspectMode::r16x9);
        s.model->outputAlwaysOnTop.set(false);
        s.model->hideOutputCursor.set(false);
        s.settle();
        QVERIFY(w->isMovableByBackground());
        QVERIFY(!w->isAlwaysOnTop());
        QVERIFY(w->isVisible());
        QCOMPARE(w->content()->cursor().shape(), Qt::ArrowCursor);
    }

    // A click pages on; on a movable output a drag moves the window instead
    // and does not page.
    void clickPagesOnAndDragMoves()
    {
        TestFolder folder;
        OutputSession s({laptop, projector});
        s.model->aspect.set(AspectMode::r16x9);
        s.model->start();
        s.settle();
        s.model->replacePlaylist({folder.pdf("a.pdf", 4)});
        OutputContentView* view = s.window()->content();
        QTest::mouseClick(view, Qt::LeftButton, {}, QPoint(100, 100));
        QCOMPARE(s.model->pageIndex(), 1);

        const QPoint start = s.window()->pos();
        QTest::mousePress(view, Qt::LeftButton, {}, QPoint(100, 100));
        QMouseEvent motion(QEvent::MouseMove, QPointF(160, 130), view->mapToGlobal(QPointF(160, 130)), Qt::NoButton,
                           Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(view, &motion);
        QTest::mouseRelease(view, Qt::LeftButton, {}, QPoint(160, 130));
        QCOMPARE(s.model->pageIndex(), 1);
        QCOMPARE(s.window()->pos(), start + QPoint(60, 30));
    }

    // Unplugging the projector moves the output to the remaining non-main
    // display, else to the main one; plugging it back brings it back.
    void unpluggingMovesTheOutput()
    {
        OutputSession s({laptop, projector, monitor});
        s.model->aspect.set(AspectMode::r4x3);
        s.model->start();
        s.settle();
        s.model->selectedDisplayID.set(2);
        s.settle();
        QCOMPARE(s.window()->geometry(), QRect(1600, 0, 1600, 1200));

        s.platform.screens->list = {laptop, monitor};
        s.platform.screens->changed();
        s.settle();
        QCOMPARE(s.window()->geometry(), s.model->outputFrame(monitor.frame).toRect());

        s.platform.screens->list = {laptop};
        s.platform.screens->changed();
        s.settle();
        QCOMPARE(s.window()->geometry(), QRect(120, 0, 1200, 900));
        QCOMPARE(s.model->outputPixelSize(), QSizeF(2400, 1800));

        s.platform.screens->list = {laptop, projector};
        s.platform.screens->changed();
        s.settle();
        QCOMPARE(s.model->selectedDisplayID(), std::optional<uint32_t>(2));
        QCOMPARE(s.window()->geometry(), QRect(1600, 0, 1600, 1200));
    }

    // An unplugged display chosen by the operator is not brought back once
    // the operator has picked another display meanwhile.
    void operatorChoiceWinsOverAReturningDisplay()
    {
        OutputSession s({laptop, projector, monitor});
        s.model->start();
        s.settle();
        s.platform.screens->list = {laptop, monitor};
        s.platform.screens->changed();
        s.settle();
        QCOMPARE(s.model->selectedDisplayID(), std::optional<uint32_t>(3));
        s.model->selectedDisplayID.set(1);
        s.settle();
        s.platform.screens->list = {laptop, projector, monitor};
        s.platform.screens->changed();
        s.settle();
        QCOMPARE(s.model->selectedDisplayID(), std::optional<uint32_t>(1));
        QCOMPARE(s.window()->geometry(), QRect(0, 0, 1440, 900));
    }

    // Closing the window from the window manager hides the output as the
    // command does; the command shows it again.
    void closingTheWindowHidesTheOutput()
    {
        OutputSession s({laptop, projector});
        s.model->start();
        s.settle();
        QVERIFY(!s.window()->close());
        QVERIFY(!s.model->isOutputVisible());
        QVERIFY(!s.window()->isVisible());
        QVERIFY(!s.controller().wasVisible());
        s.model->toggleOutputVisible();
        QVERIFY(s.window()->isVisible());
    }

    // Where clients place windows the window is the output's rectangle;
    // where they cannot, it covers the display and the picture sits at the
    // rectangle's place in it, black around it.
    void layoutWithAndWithoutClientPlacement_data()
    {
        QTest::addColumn<QRectF>("frame");
        QTest::addColumn<bool>("clientsPlace");
        QTest::addColumn<QRect>("window");
        QTest::addColumn<QRect>("picture");
        const QRectF screen = projector.frame;  // 1920 × 1200 at x 1440
        QTest::newRow("placed 4:3") << QRectF(1600, 0, 1600, 1200) << true << QRect(1600, 0, 1600, 1200)
                                    << QRect(0, 0, 1600, 1200);
        QTest::newRow("placed, half points") << QRectF(1440, 60.5, 1920, 1079) << true << QRect(1440, 61, 1920, 1079)
                                             << QRect(0, 0, 1920, 1079);
        QTest::newRow("compositor 4:3") << QRectF(1600, 0, 1600, 1200) << false << screen.toRect()
                                        << QRect(160, 0, 1600, 1200);
        QTest::newRow("compositor 16:9") << QRectF(1440, 60, 1920, 1080) << false << screen.toRect()
                                         << QRect(0, 60, 1920, 1080);
        QTest::newRow("compositor full") << screen << false << screen.toRect() << QRect(0, 0, 1920, 1200);
    }
    void layoutWithAndWithoutClientPlacement()
    {
        QFETCH(QRectF, frame);
        QFETCH(bool, clientsPlace);
        QFETCH(QRect, window);
        QFETCH(QRect, picture);
        QCOMPARE(OutputWindow::layout(frame, projector.frame, clientsPlace), (OutputWindow::Layout{window, picture}));
    }

    // The clicker's trust is read at once and every 1.5 s for as long as the
    // controller exists; work left queued after the model is gone does nothing.
    void trustLoopRunsWhileTheControllerExists()
    {
        auto s = std::make_unique<OutputSession>(std::vector<PlatformScreen>{laptop, projector});
        s->model->start();
        s->settle();
        const std::size_t queued = s->platform.scheduler->queued();
        QVERIFY(queued >= 1);
        for (int i = 0; i < 4; ++i)
            s->platform.scheduler->advance(OutputWindowController::trustInterval);
        QCOMPARE(s->platform.scheduler->queued(), queued);

        auto scheduler = s->platform.scheduler;
        s->model->aspect.set(AspectMode::r1x1);  // a sync is queued
        s->model.reset();
        scheduler->advance(10);
        QCOMPARE(scheduler->queued(), std::size_t(0));
    }
};

QTEST_MAIN(OutputWindowControllerTest)
#include "tst_OutputWindowController.moc"
