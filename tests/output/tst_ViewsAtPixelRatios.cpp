// The stage and the output window on screens of every common pixel ratio:
// marks drawn with the pointer land under the pointer, at their width. A
// screen's ratio is fixed when the program starts, so each ratio runs in a
// process of its own started with that scale factor.
#include "output/OutputContentView.h"
#include "stage/StageCanvas.h"
#include "support/ModelFixtures.h"

#include <QApplication>
#include <QProcess>
#include <QtTest>

namespace {
const char ratioVariable[] = "BRELVONIC_TEST_PIXEL_RATIO";

// A pointer move as the window system delivers it, with the buttons held now.
void moveTo(QWidget& w, QPoint pos)
{
    QMouseEvent event(QEvent::MouseMove, QPointF(pos), w.mapToGlobal(QPointF(pos)), Qt::NoButton,
                      QGuiApplication::mouseButtons(), Qt::NoModifier);
    QCoreApplication::sendEvent(&w, &event);
}

bool shown(QWidget& w, QSize size)
{
    w.resize(size);
    w.show();
    return QTest::qWaitForWindowExposed(&w);
}

// The marks are drawn in pure blue over a reddish slide with black digits.
bool isMark(QRgb p)
{
    return qBlue(p) > 160 && qRed(p) < 110 && qGreen(p) < 110;
}
// The laser's glow: blue at alpha 0.28 over the slide.
bool isGlow(QRgb p)
{
    return qBlue(p) > 110 && qBlue(p) > qRed(p) - 60;
}

// One measurement: a run of mark pixels along a row or column of a view.
struct Expected {
    QString mark;
    bool vertical;
    double line;           // the row or column, in points
    double from, to;       // the stretch searched, in points
    double centre, width;  // where the run's middle should be and how wide, in points
    bool (*test)(QRgb) = isMark;
};

// Empty when every run is where it should be in `image` (a view grabbed at
// `ratio`), else what is off.
QString check(const QImage& image, double ratio, const std::vector<Expected>& expected)
{
    QStringList wrong;
    const auto clampTo = [](double v, int last) { return std::clamp(int(v), 0, last); };
    for (const Expected& e : expected) {
        const int last = (e.vertical ? image.height() : image.width()) - 1;
        const int line = clampTo(e.line * ratio, (e.vertical ? image.width() : image.height()) - 1);
        const TestPdf::Span span = TestPdf::spanAlong(image, e.vertical, line, clampTo(e.from * ratio, last),
                                                      clampTo(e.to * ratio, last), e.test);
        if (std::abs(span.centre - e.centre * ratio) > 1.0 || std::abs(span.length - e.width * ratio) > 2.0)
            wrong << QStringLiteral("%1: centre %2 px (want %3), %4 px wide (want %5)")
                         .arg(e.mark).arg(span.centre).arg(e.centre * ratio).arg(span.length).arg(e.width * ratio);
    }
    return wrong.join(QStringLiteral("; "));
}
}

// Runs inside a process whose screen has the ratio under test.
class ViewsAtOneRatio : public QObject {
    Q_OBJECT

private slots:
    void marksFollowThePointerOnTheStageAndTheOutput()
    {
        const double ratio = qEnvironmentVariable(ratioVariable).toDouble();
        ModelWithFolder session;
        AppModel& model = session.model;
        model.replacePlaylist({session.pdf("slides.pdf", 2)});  // 16:9: the slide fills both views
        QVERIFY(slidesSettled(model));  // the glow is measured against the slide
        model.chooseMarkColor(MarkColor{0, 0, 1});
        StageCanvas stage(model);
        OutputContentView output(model);
        const QSize size(800, 450);
        QVERIFY(shown(stage, size));
        QVERIFY(shown(output, size));
        QCOMPARE(stage.devicePixelRatioF(), ratio);
        QCOMPARE(output.devicePixelRatioF(), ratio);
        QCOMPARE(stage.pictureRect(), QRectF(QPointF(0, 0), QSizeF(size)));

        const auto views = [&](const std::vector<Expected>& expected) {
            QCoreApplication::processEvents();  // the views follow the model on the next turn
            QStringList off;
            if (const QString wrong = check(stage.grab().toImage(), ratio, expected); !wrong.isEmpty())
                off << QStringLiteral("stage: ") + wrong;
            if (const QString wrong = check(output.grab().toImage(), ratio, expected); !wrong.isEmpty())
                off << QStringLiteral("output: ") + wrong;
            return off.join(QStringLiteral(" | "));
        };
        const double stroke = std::max(0.008 * 450, 2.0);
        const double frameLine = std::max(0.007 * 450, 3.0);

        // A stroke across the upper left, then one in the lower right, where
        // marks drawn at twice their place fall off the canvas.
        model.setTool(StageTool::marker);
        QTest::mousePress(&stage, Qt::LeftButton, Qt::NoModifier, QPoint(80, 112));
        moveTo(stage, QPoint(200, 112));
        // Still held: the draft stroke.
        QString off = views({{"draft stroke", true, 150, 0, 225, 112, stroke}});
        QVERIFY2(off.isEmpty(), qPrintable(off));
        QTest::mouseRelease(&stage, Qt::LeftButton, Qt::NoModifier, QPoint(320, 112));
        QTest::mousePress(&stage, Qt::LeftButton, Qt::NoModifier, QPoint(480, 337));
        moveTo(stage, QPoint(600, 337));
        QTest::mouseRelease(&stage, Qt::LeftButton, Qt::NoModifier, QPoint(720, 337));
        off = views({{"stroke", true, 150, 0, 225, 112, stroke},
                     {"stroke, lower right", true, 700, 225, 449, 337, stroke}});
        QVERIFY2(off.isEmpty(), qPrintable(off));

        // A frame dragged in the upper right; its draft while held.
        model.setTool(StageTool::frame);
        QTest::mousePress(&stage, Qt::LeftButton, Qt::NoModifier, QPoint(500, 40));
        moveTo(stage, QPoint(700, 180));
        off = views({{"draft frame's left edge", false, 110, 450, 560, 500, frameLine}});
        QVERIFY2(off.isEmpty(), qPrintable(off));
        QTest::mouseRelease(&stage, Qt::LeftButton, Qt::NoModifier, QPoint(700, 180));
        off = views({{"frame's left edge", false, 110, 450, 560, 500, frameLine},
                     {"frame's bottom edge", true, 600, 120, 220, 180, frameLine}});
        QVERIFY2(off.isEmpty(), qPrintable(off));

        // The laser follows the pointer without a button.
        model.setTool(StageTool::laser);
        moveTo(stage, QPoint(200, 300));
        off = views({{"laser core", false, 300, 150, 250, 200, 12},
                     {"laser glow", false, 300, 150, 250, 200, 34, isGlow}});
        QVERIFY2(off.isEmpty(), qPrintable(off));

        // Zoomed about a point of the first stroke: it runs through the middle
        // of both views at the zoom's width.
        model.setTool(StageTool::zoom);
        QTest::mouseClick(&stage, Qt::LeftButton, Qt::NoModifier, QPoint(160, 112));
        const double zoom = model.zoomScale();
        QVERIFY(zoom > 1.02);
        const double middle = 225 + (112 - model.zoomCenter()->y() * 450) * zoom;
        off = views({{"zoomed stroke", true, 400, 0, 449, middle, stroke * zoom}});
        QVERIFY2(off.isEmpty(), qPrintable(off));
    }
};

// Starts this program once per pixel ratio and passes on its verdict.
class ViewsAtPixelRatiosTest : public QObject {
    Q_OBJECT

private slots:
    void marksLandUnderThePointer_data()
    {
        QTest::addColumn<double>("ratio");
        for (const double ratio : {1.0, 1.25, 1.5, 2.0, 3.0})
            QTest::addRow("ratio %g", ratio) << ratio;
    }

    void marksLandUnderThePointer()
    {
        QFETCH(double, ratio);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_SCALE_FACTOR"), QString::number(ratio));
        environment.insert(QString::fromLatin1(ratioVariable), QString::number(ratio));
        if (!environment.contains(QStringLiteral("QT_QPA_PLATFORM")))
            environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        QProcess child;
        child.setProcessEnvironment(environment);
        child.setProcessChannelMode(QProcess::MergedChannels);
        child.start(QCoreApplication::applicationFilePath(), {});
        QVERIFY(child.waitForFinished(240'000));
        const QByteArray report = child.readAll();
        QVERIFY2(child.exitStatus() == QProcess::NormalExit && child.exitCode() == 0, report.constData());
    }
};

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    if (qEnvironmentVariableIsSet(ratioVariable)) {
        ViewsAtOneRatio test;
        return QTest::qExec(&test, argc, argv);
    }
    ViewsAtPixelRatiosTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_ViewsAtPixelRatios.moc"
