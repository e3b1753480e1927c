#include "model/AppModel.h"
#include "l10n/L10n.h"
#include "output/OutputContentView.h"
#include "platform/QtScreens.h"
#include "support/FakePlatform.h"
#include "support/ModelFixtures.h"
#include "support/TestPdf.h"

#include <QMenu>
#include <QScreen>
#include <QSet>
#include <QtTest>

class OutputGeometryTest : public QObject {
    Q_OBJECT

private slots:
    void windowRectangles()
    {
        auto&& [platform, model] = ModelOnFakes();
        model.aspect.set(AspectMode::r16x9);
        QCOMPARE(model.outputFrame(QRectF(0, 0, 1920, 1200)), QRectF(0, 60, 1920, 1080));
        model.aspect.set(AspectMode::r9x16);
        QCOMPARE(model.outputFrame(QRectF(100, 0, 1280, 1024)), QRectF(100 + 352, 0, 576, 1024));
        model.aspect.set(AspectMode::custom);
        model.customWidth.set(4000);
        model.customHeight.set(3000);
        QCOMPARE(model.outputFrame(QRectF(0, 0, 1920, 1080)), QRectF(0, 0, 1920, 1080));
        model.customWidth.set(0);
        model.customHeight.set(-5);
        QCOMPARE(model.outputFrame(QRectF(0, 0, 1920, 1080)).size(), QSizeF(320, 240));
        model.aspect.set(AspectMode::fillDisplay);
        QCOMPARE(model.outputFrame(QRectF(5, 6, 7, 8)), QRectF(5, 6, 7, 8));
    }

    void publishedSizes()
    {
        auto&& [platform, model] = ModelOnFakes();
        QCOMPARE(model.syphonPixelSize(), (PixelSize{1920, 1080}));  // no display: unclamped fallback
        model.aspect.set(AspectMode::custom);
        const std::tuple<int, int, PixelSize> custom[] = {
            {4000, 3000, {2560, 1920}}, {2561, 100, {2560, 98}}, {1921, 1081, {1920, 1080}}, {0, 1081, {2, 1080}}};
        for (const auto& [width, height, published] : custom) {
            model.customWidth.set(width);
            model.customHeight.set(height);
            QCOMPARE(model.syphonPixelSize(), published);
        }

        platform.screens->list = {PlatformScreen{3, "Retina", QRectF(0, 0, 2560, 1440), 2.0}};
        model.refreshDisplays();
        model.aspect.set(AspectMode::fillDisplay);
        QCOMPARE(model.syphonPixelSize(), (PixelSize{2560, 1440}));
        model.aspect.set(AspectMode::r3x4);
        QCOMPARE(model.syphonPixelSize(), (PixelSize{1440, 1920}));
    }

    void snapshotSizes()
    {
        auto&& [platform, model] = ModelOnFakes();
        model.aspect.set(AspectMode::r16x9);
        QCOMPARE(model.snapshotSize(), QSizeF(1920, 1080));
        model.outputPixelSize.set(QSizeF(2880, 1800));
        QCOMPARE(model.snapshotSize(), QSizeF(2880, 1800));
        model.outputPixelSize.set(QSizeF(0, 0));
        model.aspect.set(AspectMode::r9x16);
        QCOMPARE(model.snapshotSize(), QSizeF(1920, 1920));
    }

    void displayPreference()
    {
        FakePlatform platform;
        platform.screens->list = {PlatformScreen{1, "Laptop", QRectF(0, 0, 1440, 900), 2},
                                  PlatformScreen{std::nullopt, "Mystery", QRectF(0, 0, 800, 600), 1},
                                  PlatformScreen{2, "Projector", QRectF(1440, 0, 1920, 1080), 1}};
        platform.screens->mainId = 1;
        AppModel model(platform.services());
        model.refreshDisplays();
        QCOMPARE(model.displays().size(), std::size_t(2));  // the screen without an id is skipped
        QCOMPARE(model.selectedDisplayID(), std::optional<uint32_t>(2));
        QCOMPARE(model.selectedDisplay()->shortLabel(), QStringLiteral("Projector \u00B7 1920\u00D71080"));
        // Displays are values: equal in all five fields, one entry in a set.
        const OutputDisplay projector = *model.selectedDisplay();
        OutputDisplay moved = projector;
        moved.frame.translate(0, 1);
        const QSet<OutputDisplay> set{projector, model.displays()[1], moved};
        QCOMPARE(set.size(), 2);
        QVERIFY(moved != projector);
        QCOMPARE(qHash(model.displays()[1]), qHash(projector));
        QCOMPARE(OutputDisplay({5, "Wall", QRectF(0, 0, 1279.9, 720.4), 1, false}).shortLabel(),
                 QStringLiteral("Wall \u00B7 1279\u00D7720"));

        // Only the main display: it is preferred and selected.
        platform.screens->list.pop_back();
        model.refreshDisplays();
        QCOMPARE(model.selectedDisplayID(), std::optional<uint32_t>(1));
        // No main display at all: the first one.
        platform.screens->mainId.reset();
        platform.screens->list.push_back(PlatformScreen{2, "Projector", QRectF(1440, 0, 1920, 1080), 1});
        model.selectedDisplayID.set(std::nullopt);
        QCOMPARE(model.selectedDisplay()->id, 1u);
        // A selection nobody has: none, no fallback.
        model.selectedDisplayID.set(99);
        QVERIFY(!model.selectedDisplay());
        platform.screens->list.clear();
        model.refreshDisplays();
        QVERIFY(!model.selectedDisplayID());
    }

    void frameStates()
    {
        auto&& [folder, platform, model] = ModelWithFolder();
        model.replacePlaylist({folder.pdf("a.pdf", 3)});
        model.stageTool.set(StageTool::marker);
        model.laserPoint.set(QPointF(0.3, 0.3));
        model.isBlackout.set(true);
        OutputFrameState out = model.outputFrameState();
        QVERIFY(!out.laserPoint);
        QVERIFY(out.isBlackout);
        QCOMPARE(out.incoming, model.incomingSlideImage());
        const OutputFrameState stage = model.stagePreviewState();
        QVERIFY(!stage.isBlackout);
        QCOMPARE(stage.incoming, model.previewSlideImage());
        QCOMPARE(stage.progress, 1.0);

        model.stageTool.set(StageTool::zoom);
        model.zoomScale.set(3.0);
        out = model.outputFrameState();
        QCOMPARE(out.zoomScale, 3.0);
        QVERIFY(!out.zoomCenter);
        QVERIFY(!model.needsLiveOutput());
        model.zoomCenter.set(QPointF(0.5, 0.5));
        QVERIFY(model.needsLiveOutput());
        model.stageTool.set(StageTool::pointer);
        QCOMPARE(model.outputFrameState().zoomScale, 1.0);
        QVERIFY(!model.needsLiveOutput());
        model.stageTool.set(StageTool::laser);
        QVERIFY(model.needsLiveOutput());
    }

    void outputViewPagesAndBlacksOut()
    {
        auto&& [folder, platform, model] = ModelWithFolder();
        model.replacePlaylist({folder.pdf("a.pdf", 3)});
        OutputContentView view(model);
        view.resize(320, 180);
        QTest::mouseClick(&view, Qt::LeftButton);
        QCOMPARE(model.pageIndex(), 1);
        QCoreApplication::processEvents();
        QCOMPARE(view.state().incoming, model.incomingSlideImage());

        std::unique_ptr<QMenu> menu(view.makeContextMenu(nullptr));
        const auto actions = menu->actions();
        QCOMPARE(actions.size(), 4);
        QVERIFY(actions[2]->isSeparator());
        actions[0]->trigger();
        QCOMPARE(model.pageIndex(), 0);
        actions[3]->trigger();
        QVERIFY(model.isBlackout());
        std::unique_ptr<QMenu> again(view.makeContextMenu(nullptr));
        QCOMPARE(again->actions()[3]->text(), L10n::t("blackout.off"));
    }

    void screensHaveStableIdentifiers()
    {
        QtScreens screens;
        const auto first = screens.screens();
        QVERIFY(!first.empty());
        for (const auto& s : first) {
            QVERIFY(s.displayId && *s.displayId != 0);
            QVERIFY(s.frame.width() > 0 && s.backingScale > 0);
        }
        QCOMPARE(screens.screens().front().displayId, first.front().displayId);
        QCOMPARE(screens.mainDisplayId(), first.front().displayId);

        // A display with a serial keeps its identifier on another connector.
        QCOMPARE(QtScreens::identifierOf("DP-1", "DEL", "U2415", "7MT01"),
                 QtScreens::identifierOf("HDMI-2", "DEL", "U2415", "7MT01"));
        QVERIFY(QtScreens::identifierOf("DP-1", "DEL", "U2415", "7MT01")
                != QtScreens::identifierOf("DP-1", "DEL", "U2415", "7MT02"));
        // Without one, the connector tells identical displays apart.
        QVERIFY(QtScreens::identifierOf("DP-1", "", "", "") != QtScreens::identifierOf("DP-2", "", "", ""));
        QVERIFY(QtScreens::identifierOf("DP-1", "", "", " ") != QtScreens::identifierOf("DP-2", "", "", ""));
        // Fields cannot run into each other.
        QVERIFY(QtScreens::identifierOf("ab", "c", "", "") != QtScreens::identifierOf("a", "bc", "", ""));

        QCOMPARE(QtScreens::displayName("DP-1", "DEL", "U2415"), QStringLiteral("DEL U2415 (DP-1)"));
        QCOMPARE(QtScreens::displayName("DUMMY0", "", ""), QStringLiteral("DUMMY0"));
        QCOMPARE(QtScreens::displayName("", "", "Beamer"), QStringLiteral("Beamer"));
    }

    void screensReportChanges()
    {
        QtScreens screens;
        int calls = 0;
        screens.setChangeHandler([&] { ++calls; });
        QScreen* screen = QGuiApplication::primaryScreen();
        QVERIFY(screen);
        emit screen->geometryChanged(QRect(0, 0, 1280, 1024));
        QCOMPARE(calls, 1);
        // The platform announcing a screen it already listed must not make
        // later geometry changes report twice.
        emit qGuiApp->screenAdded(screen);
        QCOMPARE(calls, 2);
        emit screen->geometryChanged(QRect(0, 0, 1920, 1080));
        QCOMPARE(calls, 3);
        emit qGuiApp->screenRemoved(screen);
        QCOMPARE(calls, 4);
        emit screen->logicalDotsPerInchChanged(144);
        QCOMPARE(calls, 5);
    }
};

QTEST_MAIN(OutputGeometryTest)
#include "tst_OutputGeometry.moc"
