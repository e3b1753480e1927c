#include "model/AppModel.h"
#include "stage/StageCanvas.h"
#include "support/FakePlatform.h"
#include "support/ModelFixtures.h"
#include "support/TestPdf.h"

#include <QGestureEvent>
#include <QLineEdit>
#include <QPinchGesture>
#include <QVBoxLayout>
#include <QtTest>

namespace {
// A 400×225 canvas shows a 16:9 slide edge to edge; a taller one letterboxes.
QPoint at(const StageCanvas& canvas, double nx, double ny)
{
    const QRectF r = canvas.pictureRect();
    return QPointF(r.x() + nx * r.width(), r.y() + ny * r.height()).toPoint();
}

// A pointer move as the window system delivers it, with or without a button
// held: the same on every platform plugin (QTest's moves warp the real cursor
// on some).
void moveTo(QWidget* w, QPoint pos)
{
    QMouseEvent event(QEvent::MouseMove, QPointF(pos), w->mapToGlobal(QPointF(pos)), Qt::NoButton,
                      QGuiApplication::mouseButtons(), Qt::NoModifier);
    QCoreApplication::sendEvent(w, &event);
}

// A left-button drag from `from` through `via`, released at `to`.
void drag(QWidget* w, QPoint from, QPoint via, QPoint to)
{
    QTest::mousePress(w, Qt::LeftButton, Qt::NoModifier, from);
    moveTo(w, via);
    QTest::mouseRelease(w, Qt::LeftButton, Qt::NoModifier, to);
}

// Shows `w` at `size` on the offscreen screen.
bool shown(QWidget& w, QSize size)
{
    w.resize(size);
    w.show();
    return QTest::qWaitForWindowExposed(&w);
}

void wheel(QWidget& w, QPoint pixel, QPoint angle, bool* accepted = nullptr)
{
    const QPointF pos(w.width() / 2.0, w.height() / 2.0);
    QWheelEvent event(pos, w.mapToGlobal(pos), pixel, angle, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase,
                      false);
    QCoreApplication::sendEvent(&w, &event);
    if (accepted)
        *accepted = event.isAccepted();
}
}

class StageCanvasTest : public QObject {
    Q_OBJECT

private slots:
    void theSlideFillsTheCanvasWithItsOwnAspect()
    {
        // A 4:3 slide on a 16:9 canvas: the picture is 360 wide, 60 from the
        // left, and input there lands on the slide's own edges.
        auto&& [folder, platform, model] = ModelWithFolder();
        model.replacePlaylist({folder.pdf("four-three.pdf", 2, TestPdf::standard)});
        StageCanvas canvas(model);
        canvas.resize(480, 270);
        QCoreApplication::processEvents();
        QCOMPARE(canvas.pictureRect(), QRectF(60, 0, 360, 270));
        model.setTool(StageTool::marker);
        drag(&canvas, QPoint(60, 135), QPoint(240, 135), QPoint(420, 135));
        QCOMPARE(marksOn(model.strokesByPage, model.pageKey()).size(), std::size_t(1));
        QCOMPARE(marksOn(model.strokesByPage, model.pageKey())[0].points.front(), QPointF(0, 0.5));
        QCOMPARE(marksOn(model.strokesByPage, model.pageKey())[0].points.back(), QPointF(1, 0.5));
    }

    void keysStayWithTheConsoleAndTheWheelStealsNothing()
    {
        auto&& [platform, model] = ModelOnFakes();
        QWidget console;
        auto* layout = new QVBoxLayout(&console);
        auto* keys = new QLineEdit(&console);  // stands for the console's key handling
        auto* canvas = new StageCanvas(model, &console);
        layout->addWidget(keys);
        layout->addWidget(canvas);
        console.resize(400, 300);
        console.show();
        QVERIFY(QTest::qWaitForWindowExposed(&console));
        // The window's own focus widget: this holds with or without a window
        // manager that activates the window.
        keys->setFocus();
        QCOMPARE(console.focusWidget(), keys);

        // A zoom drag with the wheel turned in the middle: the drag goes on to
        // its release, the wheel changes only the scale.
        model.setTool(StageTool::zoom);
        QTest::mousePress(canvas, Qt::LeftButton, Qt::NoModifier, at(*canvas, 0.2, 0.2));
        moveTo(canvas, at(*canvas, 0.3, 0.3));
        wheel(*canvas, {}, {0, 120});
        QVERIFY(qFuzzyCompare(model.zoomScale(), 2.35));
        moveTo(canvas, at(*canvas, 0.4, 0.6));
        QTest::mouseRelease(canvas, Qt::LeftButton, Qt::NoModifier, at(*canvas, 0.7, 0.6));
        QVERIFY(qAbs(model.zoomCenter()->x() - 0.7) < 0.01);
        QVERIFY(qFuzzyCompare(model.zoomScale(), 2.35));

        // Hover keeps driving the laser after wheel turns.
        model.setTool(StageTool::laser);
        wheel(*canvas, {}, {0, -120});
        moveTo(canvas, at(*canvas, 0.6, 0.4));
        QVERIFY(model.laserPoint());
        QVERIFY(qAbs(model.laserPoint()->x() - 0.6) < 0.01);

        // A marker stroke after the wheel still lands.
        model.setTool(StageTool::marker);
        wheel(*canvas, {0, 20}, {});
        drag(canvas, at(*canvas, 0.1, 0.5), at(*canvas, 0.5, 0.5), at(*canvas, 0.9, 0.5));
        QCOMPARE(marksOn(model.strokesByPage, model.pageKey()).size(), std::size_t(1));

        QCOMPARE(canvas->focusPolicy(), Qt::NoFocus);
        QCOMPARE(console.focusWidget(), keys);
    }

    void markerDragStoresAStrokeClampedToTheEdge()
    {
        auto&& [platform, model] = ModelOnFakes();
        StageCanvas canvas(model);
        QVERIFY(shown(canvas, {400, 300}));  // letterboxed: 400×225 slide, 37.5 px bands
        QCOMPARE(canvas.pictureRect().height(), 225.0);
        model.setTool(StageTool::marker);

        QTest::mousePress(&canvas, Qt::LeftButton, Qt::NoModifier, at(canvas, 0.25, 0.5));
        moveTo(&canvas, at(canvas, 0.5, 0.5));
        QVERIFY(model.draftStroke());
        moveTo(&canvas, QPoint(600, -50));  // far outside, up-right
        QTest::mouseRelease(&canvas, Qt::LeftButton, Qt::NoModifier, QPoint(600, -50));
        QVERIFY(!model.draftStroke());
        const auto& strokes = marksOn(model.strokesByPage, model.pageKey());
        QCOMPARE(strokes.size(), std::size_t(1));
        const auto& pts = strokes[0].points;
        QVERIFY(pts.size() >= 3);
        QVERIFY(qAbs(pts.front().x() - 0.25) < 0.01);
        QVERIFY(qAbs(pts.front().y() - 0.5) < 0.01);
        QCOMPARE(pts.back(), QPointF(1.0, 0.0));

        // A click stores nothing.
        QTest::mouseClick(&canvas, Qt::LeftButton, Qt::NoModifier, at(canvas, 0.5, 0.5));
        QCOMPARE(marksOn(model.strokesByPage, model.pageKey()).size(), std::size_t(1));
        QCOMPARE(model.annotationUndo().size(), std::size_t(1));
        QVERIFY(!model.draftStroke());

        // A drag starting in the black band begins on the slide's top edge.
        drag(&canvas, QPoint(200, 5), QPoint(200, 150), QPoint(200, 150));
        QCOMPARE(marksOn(model.strokesByPage, model.pageKey()).size(), std::size_t(2));
        QCOMPARE(marksOn(model.strokesByPage, model.pageKey())[1].points.front(), QPointF(0.5, 0.0));
    }

    void markupIsDrawnWhereTheInputLanded()
    {
        auto&& [platform, model] = ModelOnFakes();
        StageCanvas canvas(model);
        QVERIFY(shown(canvas, {400, 300}));
        model.setTool(StageTool::marker);
        model.chooseMarkColor(MarkColor::presets()[3]);  // green
        drag(&canvas, at(canvas, 0.2, 0.3), at(canvas, 0.5, 0.3), at(canvas, 0.8, 0.3));
        QCoreApplication::processEvents();  // the follower's queued redraw
        const QImage shot = canvas.grab().toImage();
        const QColor onStroke = shot.pixelColor(at(canvas, 0.6, 0.3));
        QVERIFY2(onStroke.green() > 150 && onStroke.red() < 120, qPrintable(onStroke.name()));
        QCOMPARE(shot.pixelColor(at(canvas, 0.6, 0.6)), QColor(Qt::black));
        QCOMPARE(shot.pixelColor(QPoint(200, 5)), QColor(Qt::black));
    }

    void laserFollowsHoverAndHidesOnLeave()
    {
        auto&& [platform, model] = ModelOnFakes();
        StageCanvas canvas(model);
        QVERIFY(shown(canvas, {320, 180}));

        moveTo(&canvas, at(canvas, 0.5, 0.5));
        QVERIFY(!model.laserPoint());  // pointer tool: hover does nothing

        model.setTool(StageTool::laser);
        moveTo(&canvas, at(canvas, 0.25, 0.75));
        QVERIFY(model.laserPoint());
        QVERIFY(qAbs(model.laserPoint()->x() - 0.25) < 0.01);
        QVERIFY(qAbs(model.laserPoint()->y() - 0.75) < 0.01);
        // A press under the laser neither draws nor drops the dot.
        QTest::mousePress(&canvas, Qt::LeftButton, Qt::NoModifier, at(canvas, 0.5, 0.5));
        QTest::mouseRelease(&canvas, Qt::LeftButton, Qt::NoModifier, at(canvas, 0.5, 0.5));
        QVERIFY(model.laserPoint());
        QVERIFY(model.strokesByPage().empty());

        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(&canvas, &leave);
        QVERIFY(!model.laserPoint());
    }

    void frameAndZoomByMouse()
    {
        auto&& [platform, model] = ModelOnFakes();
        StageCanvas canvas(model);
        QVERIFY(shown(canvas, {320, 180}));

        model.setTool(StageTool::frame);
        QTest::mousePress(&canvas, Qt::LeftButton, Qt::NoModifier, at(canvas, 0.75, 0.75));
        moveTo(&canvas, at(canvas, 0.25, 0.25));
        QVERIFY(model.draftFrameRect());
        QVERIFY(model.draftFrameRect()->width() < 0);
        QTest::mouseRelease(&canvas, Qt::LeftButton, Qt::NoModifier, at(canvas, 0.25, 0.25));
        const auto& frames = model.framesByPage().at(model.pageKey());
        QCOMPARE(frames.size(), std::size_t(1));
        QVERIFY(frames[0].rect.width() > 0.45 && frames[0].rect.height() > 0.45);

        model.setTool(StageTool::zoom);
        model.zoomScale.set(1.2);
        QTest::mouseClick(&canvas, Qt::LeftButton, Qt::NoModifier, at(canvas, 0.2, 0.8));
        QVERIFY(model.zoomCenter());
        QVERIFY(qAbs(model.zoomCenter()->x() - 0.2) < 0.01);
        QCOMPARE(model.zoomScale(), 1.6);
    }

    void wheelNudgesZoomOnlyUnderZoom()
    {
        auto&& [platform, model] = ModelOnFakes();
        StageCanvas canvas(model);
        canvas.resize(320, 180);

        wheel(canvas, {}, {0, 120});
        QCOMPARE(model.zoomScale(), 2.2);  // pointer tool: ignored

        model.setTool(StageTool::zoom);
        for (int i = 0; i < 5; ++i)
            wheel(canvas, {}, {0, 120});
        QVERIFY(qFuzzyCompare(model.zoomScale(), 2.95));
        QCOMPARE(model.zoomCenter(), std::optional(QPointF(0.5, 0.5)));

        // The pixel delta wins over the angle delta.
        wheel(canvas, {0, -3}, {0, 120});
        QVERIFY(qFuzzyCompare(model.zoomScale(), 2.8));

        // A tiny delta is passed on untouched.
        bool accepted = true;
        wheel(canvas, {}, {0, 6}, &accepted);
        QVERIFY(!accepted);
        QVERIFY(qFuzzyCompare(model.zoomScale(), 2.8));
    }

    void pinchScalesTheZoom()
    {
        auto&& [platform, model] = ModelOnFakes();
        StageCanvas canvas(model);
        model.setTool(StageTool::zoom);
        const QPointingDevice* pad = QPointingDevice::primaryPointingDevice();
        const auto send = [&](Qt::NativeGestureType type, double value) {
            QNativeGestureEvent e(type, pad, 2, QPointF(10, 10), QPointF(10, 10), QPointF(10, 10), value, {}, {});
            QCoreApplication::sendEvent(&canvas, &e);
        };
        send(Qt::BeginNativeGesture, 0);
        send(Qt::ZoomNativeGesture, 0.5);
        QVERIFY(qFuzzyCompare(model.zoomScale(), 1.5 * 2.2));
        send(Qt::ZoomNativeGesture, 1.0);  // running factor 3
        QCOMPARE(model.zoomScale(), 6.0);
        send(Qt::EndNativeGesture, 0);

        // A touch pinch through the gesture framework: the running factor.
        QPinchGesture pinch;
        pinch.setTotalScaleFactor(2.0);
        QGestureEvent gestures({&pinch});
        QCoreApplication::sendEvent(&canvas, &gestures);
        QVERIFY(qFuzzyCompare(model.zoomScale(), 4.4));
        // Under another tool a pinch changes nothing.
        model.setTool(StageTool::marker);
        pinch.setTotalScaleFactor(1.0);
        QCoreApplication::sendEvent(&canvas, &gestures);
        QVERIFY(qFuzzyCompare(model.zoomScale(), 4.4));
    }
};

QTEST_MAIN(StageCanvasTest)
#include "tst_StageCanvas.moc"
