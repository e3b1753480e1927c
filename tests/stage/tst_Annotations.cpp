#include "model/AppModel.h"
#include "stage/CanvasInteraction.h"
#include "support/FakePlatform.h"
#include "support/ModelFixtures.h"
#include "support/TestPdf.h"

#include <QtTest>

#include <unordered_set>

namespace {
void drawStroke(AppModel& model, QPointF from, QPointF to)
{
    model.handleCanvasPoint(from, false);
    model.handleCanvasPoint((from + to) / 2, false);
    model.handleCanvasPoint(to, true);
}

void drawFrame(AppModel& model, QPointF from, QPointF to)
{
    model.handleCanvasPoint(from, false);
    model.handleCanvasPoint(to, true);
}
}

class AnnotationsTest : public QObject {
    Q_OBJECT

    TestFolder folder;
    QString six;

private slots:
    void initTestCase() { six = folder.pdf("six.pdf", 6); }

    void toolsDecodeAndHashColours()
    {
        const auto all = stageTools.all();
        QCOMPARE(all.size(), std::size_t(5));
        QCOMPARE(all[0], StageTool::pointer);
        QCOMPARE(all[4], StageTool::zoom);
        QCOMPARE(stageToolTitleKey(StageTool::frame), QStringLiteral("frame"));
        QCOMPARE(stageToolFromRaw(u"marker"), std::optional(StageTool::marker));
        QVERIFY(!stageToolFromRaw(u"pen"));
        QVERIFY(!stageToolFromRaw(u"Laser"));

        std::unordered_set<MarkColor> palette(MarkColor::presets().begin(), MarkColor::presets().end());
        QCOMPARE(palette.size(), std::size_t(6));
        QCOMPARE(MarkColor(), MarkColor::presets()[0]);
        QVERIFY(palette.count(MarkColor{0.18, 0.72, 0.96}));
    }

    void historyKeepsFortyRecords()
    {
        auto&& [platform, model] = ModelOnFakes();
        model.setTool(StageTool::marker);
        const QString key = model.pageKey();
        for (int i = 0; i < 41; ++i)
            drawStroke(model, {0.01 * i, 0.1}, {0.01 * i, 0.9});
        QCOMPARE(marksOn(model.strokesByPage, key).size(), std::size_t(41));
        QCOMPARE(model.annotationUndo().size(), std::size_t(40));
        const QUuid first = marksOn(model.strokesByPage, key).front().id;
        for (int i = 0; i < 41; ++i)
            model.undoAnnotation();
        QCOMPARE(marksOn(model.strokesByPage, key).size(), std::size_t(1));
        QCOMPARE(marksOn(model.strokesByPage, key).front().id, first);
        QVERIFY(model.annotationUndo().empty());
    }

    void undoAfterClearRestoresInOrder()
    {
        auto&& [platform, model] = ModelOnFakes();
        const QString key = model.pageKey();
        model.setTool(StageTool::marker);
        drawStroke(model, {0.1, 0.1}, {0.2, 0.2});
        model.chooseMarkColor(MarkColor::presets()[3]);
        drawStroke(model, {0.3, 0.3}, {0.4, 0.4});
        model.setTool(StageTool::frame);
        drawFrame(model, {0.5, 0.5}, {0.7, 0.6});
        drawFrame(model, {0.9, 0.9}, {0.6, 0.7});  // bottom-right to top-left
        const auto strokes = marksOn(model.strokesByPage, key);
        const auto frames = marksOn(model.framesByPage, key);
        QCOMPARE(strokes.size(), std::size_t(2));
        QCOMPARE(frames.size(), std::size_t(2));
        QCOMPARE(strokes[0].red, 1.0);
        QCOMPARE(strokes[1].green, 0.82);
        QCOMPARE(strokes[1].lineWidth, 0.008);
        QCOMPARE(frames[1].rect.topLeft(), QPointF(0.6, 0.7));
        QVERIFY(qFuzzyCompare(frames[1].rect.width(), 0.3));

        // A clear in the middle of a drag drops the draft as well.
        model.handleCanvasPoint({0.2, 0.2}, false);
        QVERIFY(model.draftFrameRect());
        model.clearAnnotations();
        QVERIFY(!model.draftFrameRect());
        QVERIFY(marksOn(model.strokesByPage, key).empty());
        QVERIFY(marksOn(model.framesByPage, key).empty());
        QVERIFY(model.strokesByPage().count(key));
        QCOMPARE(model.annotationUndo().size(), std::size_t(5));

        model.undoAnnotation();
        QCOMPARE(marksOn(model.strokesByPage, key), strokes);
        QCOMPARE(marksOn(model.framesByPage, key), frames);
        model.undoAnnotation();
        QCOMPARE(marksOn(model.framesByPage, key).size(), std::size_t(1));
        QCOMPARE(marksOn(model.framesByPage, key)[0], frames[0]);
        QCOMPARE(marksOn(model.strokesByPage, key), strokes);
    }

    void clearingAnEmptyPagePushesNothing()
    {
        auto&& [platform, model] = ModelOnFakes();
        model.setTool(StageTool::marker);
        model.handleCanvasPoint({0.1, 0.1}, false);
        model.handleCanvasPoint({0.2, 0.1}, false);
        model.clearAnnotations();
        QVERIFY(!model.draftStroke());
        QVERIFY(model.annotationUndo().empty());
        model.undoAnnotation();  // empty history: nothing happens
        QVERIFY(model.strokesByPage().empty());
    }

    void clickAndTinyFramesStoreNothing()
    {
        auto&& [platform, model] = ModelOnFakes();
        const QString key = model.pageKey();
        model.setTool(StageTool::marker);
        model.handleCanvasPoint({0.4, 0.4}, true);
        QVERIFY(marksOn(model.strokesByPage, key).empty());
        QVERIFY(!model.draftStroke());
        QVERIFY(model.annotationUndo().empty());

        model.setTool(StageTool::frame);
        drawFrame(model, {0.5, 0.5}, {0.52, 0.6});
        drawFrame(model, {0.5, 0.5}, {0.6, 0.52});
        QVERIFY(marksOn(model.framesByPage, key).empty());
        QVERIFY(!model.draftFrameRect());
        drawFrame(model, {0.5, 0.5}, {0.521, 0.521});
        QCOMPARE(marksOn(model.framesByPage, key).size(), std::size_t(1));
        QCOMPARE(model.annotationUndo().size(), std::size_t(1));

        // While dragging up-left the draft keeps its origin with negative sides.
        model.handleCanvasPoint({0.5, 0.5}, false);
        model.handleCanvasPoint({0.3, 0.2}, false);
        QCOMPARE(model.draftFrameRect()->topLeft(), QPointF(0.5, 0.5));
        QVERIFY(model.draftFrameRect()->width() < 0);
    }

    void pointsOutsideAreClamped()
    {
        auto&& [platform, model] = ModelOnFakes();
        model.setTool(StageTool::marker);
        model.handleCanvasPoint({0.9, 0.5}, false);
        model.handleCanvasPoint({1.4, -0.3}, false);
        QCOMPARE(model.draftStroke()->points.back(), QPointF(1.0, 0.0));
        QCOMPARE(CanvasInput::normalise({-20, 130}, QSizeF(200, 100)), QPointF(0, 1));
        QCOMPARE(CanvasInput::normalise({50, 25}, QSizeF(200, 100)), QPointF(0.25, 0.25));
        QCOMPARE(CanvasInput::normalise({0.3, 0.7}, QSizeF(0, 1)), QPointF(0.3, 0.7));
    }

    void toolsToggleAndHideTheirMarks()
    {
        auto&& [platform, model] = ModelOnFakes();
        model.setTool(StageTool::marker);
        drawStroke(model, {0.1, 0.1}, {0.2, 0.2});
        model.setTool(StageTool::marker);
        QCOMPARE(model.stageTool(), StageTool::pointer);
        QCOMPARE(marksOn(model.strokesByPage, model.pageKey()).size(), std::size_t(1));

        model.setTool(StageTool::laser);
        model.handleCanvasPoint({0.3, 0.4}, false);
        QCOMPARE(model.laserPoint(), std::optional(QPointF(0.3, 0.4)));
        model.setTool(StageTool::marker);
        QVERIFY(!model.laserPoint());

        model.setTool(StageTool::laser);
        model.handleCanvasPoint({0.3, 0.4}, false);
        model.handleCanvasPoint({0.5, 0.5}, true);
        QVERIFY(!model.laserPoint());

        model.setTool(StageTool::zoom);
        model.handleCanvasPoint({0.2, 0.8}, true);
        QCOMPARE(model.zoomCenter(), std::optional(QPointF(0.2, 0.8)));
        model.setTool(StageTool::frame);
        QVERIFY(!model.zoomCenter());
    }

    void zoomRules()
    {
        auto&& [platform, model] = ModelOnFakes();
        model.nudgeZoom(0.15);  // not the zoom tool: nothing
        QCOMPARE(model.zoomScale(), 2.2);
        QVERIFY(!model.zoomCenter());

        model.setTool(StageTool::zoom);
        for (int i = 0; i < 5; ++i)
            model.nudgeZoom(*CanvasInput::wheelZoomStep(3));
        QVERIFY(qFuzzyCompare(model.zoomScale(), 2.95));
        QCOMPARE(model.zoomCenter(), std::optional(QPointF(0.5, 0.5)));

        model.zoomScale.set(1.3);
        model.nudgeZoom(-0.15);
        model.nudgeZoom(-0.15);
        QCOMPARE(model.zoomScale(), 1.2);
        model.handleCanvasPoint({0.2, 0.8}, false);
        QCOMPARE(model.zoomScale(), 1.6);
        model.zoomScale.set(4.0);
        model.handleCanvasPoint({0.2, 0.8}, true);
        QCOMPARE(model.zoomScale(), 4.0);
        model.pinchZoom(3.0);
        QCOMPARE(model.zoomScale(), 6.0);
        model.pinchZoom(1.0);
        QVERIFY(qFuzzyCompare(model.zoomScale(), 2.2));

        QVERIFY(!CanvasInput::wheelZoomStep(0.1));
        QVERIFY(!CanvasInput::wheelZoomStep(-0.05));
        QCOMPARE(*CanvasInput::wheelZoomStep(-0.2), -0.15);
        // Pixel deltas come first, angle deltas in notches otherwise.
        QCOMPARE(CanvasInput::wheelDelta({0, -4}, {0, 120}), -4.0);
        QCOMPARE(CanvasInput::wheelDelta({0, 0}, {0, 120}), 1.0);
        QVERIFY(!CanvasInput::wheelZoomStep(CanvasInput::wheelDelta({0, 0}, {0, 12})));
    }

    void undoOnAnotherPageLeavesTheCurrentOne()
    {
        auto&& [platform, model] = ModelOnFakes();
        model.replacePlaylist({six});
        platform.scheduler->runPending();
        QCOMPARE(model.pageCount(), 6);
        model.goToPage(2);
        const QString slide3 = model.pageKey();
        model.setTool(StageTool::marker);
        drawStroke(model, {0.1, 0.1}, {0.2, 0.2});
        model.goToPage(4);
        const QString slide5 = model.pageKey();
        QVERIFY(slide3 != slide5);
        model.setTool(StageTool::frame);
        drawFrame(model, {0.3, 0.3}, {0.6, 0.6});
        model.undoAnnotation();  // the frame on slide 5
        const ImagePtr shown = model.previewSlideImage();
        const ImagePtr onOutput = model.incomingSlideImage();
        model.undoAnnotation();  // the stroke on slide 3, while slide 5 is shown
        QVERIFY(marksOn(model.strokesByPage, slide3).empty());
        QVERIFY(marksOn(model.framesByPage, slide5).empty());
        QCOMPARE(model.pageIndex(), 4);
        QCOMPARE(model.pageKey(), slide5);
        QCOMPARE(model.previewSlideImage(), shown);
        QCOMPARE(model.incomingSlideImage(), onOutput);
        QCOMPARE(TestPdf::pageShown(model.previewSlideImage()), 4);
        model.setTool(StageTool::marker);

        // Markup stays with its page when paging away and back.
        drawStroke(model, {0.3, 0.3}, {0.4, 0.4});
        model.goToPage(0);
        QVERIFY(marksOn(model.strokesByPage, model.pageKey()).empty());
        model.goToPage(4);
        QCOMPARE(marksOn(model.strokesByPage, model.pageKey()).size(), std::size_t(1));
    }
};

QTEST_MAIN(AnnotationsTest)
#include "tst_Annotations.moc"
