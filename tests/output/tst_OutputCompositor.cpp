#include "output/OutputCompositor.h"
#include "support/TestPdf.h"

#include <QPainter>
#include <QtTest>

#include <functional>
#include <random>

using TestPdf::near;

namespace {
ImagePtr solid(QSize size, QColor colour)
{
    auto image = std::make_shared<QImage>(size, QImage::Format_ARGB32_Premultiplied);
    image->fill(colour);
    return image;
}

// Pixels in `area` that pass `test`; by default those that are not black.
int count(const QImage& image, QRect area, const std::function<bool(QRgb)>& test = [](QRgb p) { return (p & 0xFFFFFF) != 0; })
{
    int n = 0;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            n += test(image.pixel(x, y));
    return n;
}

int countColoured(const QImage& image)
{
    return count(image, image.rect());
}

// Every channel of every pixel within `tolerance`.
int worstDifference(const QImage& a, const QImage& b)
{
    int worst = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            worst = std::max({worst, qAbs(qRed(p) - qRed(q)), qAbs(qGreen(p) - qGreen(q)), qAbs(qBlue(p) - qBlue(q)),
                              qAbs(qAlpha(p) - qAlpha(q))});
        }
    return worst;
}

ImagePtr gradient(QSize size, int seed)
{
    auto image = std::make_shared<QImage>(size, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            image->setPixel(x, y, qRgb((x * 255 / size.width() + seed) % 256, y * 255 / size.height(), (x + y + seed) % 256));
    return image;
}

// `s` drawn on a green canvas; a clip sends it through the painter instead
// of the one-pass blend.
QImage drawn(const OutputFrameState& s, QSize canvas, QImage::Format format, bool clip)
{
    QImage image(canvas, format);
    image.fill(Qt::green);
    QPainter p(&image);
    if (clip)
        p.setClipRect(QRect(QPoint(0, 0), canvas));
    OutputCompositor::draw(s, p, QSizeF(canvas));
    return image;
}

// How far the one-pass blend is from the painter, on a 37×21 canvas.
int blendError(const OutputFrameState& s, QImage::Format format = QImage::Format_ARGB32_Premultiplied)
{
    return worstDifference(drawn(s, {37, 21}, format, false), drawn(s, {37, 21}, format, true));
}

// Width of the non-black run along row `y`.
int litWidth(const QImage& image, int y)
{
    return count(image, QRect(0, y, image.width(), 1));
}
// The pixel ratios of the screens an operator meets.
const double pixelRatios[] = {1, 1.25, 1.5, 2, 3};

// A frame of canvas `canvas` in a bitmap of pixel ratio `ratio`, drawn by
// `draw`, through the painter when `clip`.
QImage drawnAtRatio(const OutputFrameState& s, QSizeF canvas, double ratio, bool clip, bool* direct = nullptr)
{
    QImage image((canvas * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::green);
    QPainter p(&image);
    if (clip)
        p.setClipRect(QRectF(QPointF(0, 0), canvas));
    if (direct)
        *direct = OutputCompositor::blendsDirectly(s, p, canvas);
    OutputCompositor::draw(s, p, canvas);
    return image;
}

// Every kind of mark on a 200×120 canvas, each on rows and columns of its
// own so it can be measured: a green stroke across the upper left, a red one
// down the right half, a blue draft stroke across the lower left, a yellow
// frame lower right, a draft frame upper right and the laser, both magenta.
OutputFrameState markedUp(ImagePtr slide)
{
    OutputFrameState s;
    s.incoming = std::move(slide);
    s.accentRed = 1;
    s.accentGreen = 0;
    s.accentBlue = 1;
    s.strokes = {Stroke{QUuid::createUuid(), {{0.1, 0.25}, {0.45, 0.25}}, 0, 1, 0, 0.04},
                 Stroke{QUuid::createUuid(), {{0.75, 0.1}, {0.75, 0.9}}, 1, 0, 0, 0.04}};
    s.draftStroke = Stroke{QUuid::createUuid(), {{0.1, 0.85}, {0.45, 0.85}}, 0, 0, 1, 0.04};
    s.frames = {FrameRect{QUuid::createUuid(), QRectF(0.55, 0.55, 0.1, 0.3), 1, 1, 0}};
    s.draftFrame = QRectF(0.55, 0.1, 0.1, 0.2);
    s.laserPoint = QPointF(0.3, 0.55);
    return s;
}

bool isGreen(QRgb p) { return qGreen(p) > 128 && qRed(p) < 100 && qBlue(p) < 100; }
bool isRed(QRgb p) { return qRed(p) > 128 && qGreen(p) < 100 && qBlue(p) < 100; }
bool isBlue(QRgb p) { return qBlue(p) > 128 && qRed(p) < 100 && qGreen(p) < 100; }
bool isYellow(QRgb p) { return qRed(p) > 128 && qGreen(p) > 128 && qBlue(p) < 100; }
bool isMagenta(QRgb p) { return qRed(p) > 128 && qBlue(p) > 128 && qGreen(p) < 100; }
// The laser's glow over the grey slide, core included.
bool isGlow(QRgb p) { return qRed(p) > 70 && qBlue(p) > 70 && qGreen(p) < 35; }

// "centre 30 (want 30), length 5 (want 4.8)" when the run is off, else empty.
QString offBy(const TestPdf::Span& span, double centre, double length)
{
    if (std::abs(span.centre - centre) <= 1.0 && std::abs(span.length - length) <= 2.0)
        return {};
    return QStringLiteral("centre %1 (want %2), length %3 (want %4)").arg(span.centre).arg(centre).arg(span.length).arg(length);
}
}

class OutputCompositorTest : public QObject {
    Q_OBJECT

private slots:
    void blackoutIsPlainBlack()
    {
        OutputFrameState s;
        s.incoming = solid({160, 90}, Qt::white);
        s.outgoing = solid({160, 90}, Qt::red);
        s.progress = 0.4;
        s.laserPoint = QPointF(0.5, 0.5);
        s.strokes = {Stroke{QUuid::createUuid(), {{0.1, 0.1}, {0.9, 0.9}}, 1, 1, 1, 0.01}};
        s.isBlackout = true;
        QCOMPARE(countColoured(OutputCompositor::makeImage(s, {160, 90})), 0);
        QCOMPARE(countColoured(OutputCompositor::makeImage(OutputFrameState{}, {160, 90})), 0);
        // Nothing to draw on still makes a 2×2 frame.
        QCOMPARE(OutputCompositor::makeImage(OutputFrameState{}, {0, 0}).size(), QSize(2, 2));
    }

    void containLeavesBarsAndCoverCrops()
    {
        OutputFrameState s;
        s.incoming = solid({400, 300}, Qt::white);  // 4:3 on a 16:9 canvas
        const QImage contain = OutputCompositor::makeImage(s, {160, 90});
        // Bars of (160 − 90 × 4 ÷ 3) ÷ 2 = 20 each side.
        QCOMPARE(litWidth(contain, 45), 120);
        QVERIFY(near(contain.pixel(19, 45), Qt::black));
        QVERIFY(near(contain.pixel(21, 45), Qt::white));
        s.fit = ContentFit::cover;
        const QImage cover = OutputCompositor::makeImage(s, {160, 90});
        QCOMPARE(countColoured(cover), 160 * 90);

        const QRectF f = OutputCompositor::fitted({400, 300}, QRectF(0, 0, 160, 90), true);
        QCOMPARE(f, QRectF(0, -15, 160, 120));
    }

    void fadeBlendsAndDropsTheOutgoingNearTheEnd()
    {
        OutputFrameState s;
        s.outgoing = solid({100, 100}, QColor(255, 0, 0));
        s.incoming = solid({100, 100}, QColor(0, 0, 255));
        s.progress = 0.5;
        QImage half = OutputCompositor::makeImage(s, {100, 100});
        const QRgb mid = half.pixel(50, 50);
        // Each at alpha 0.5, the incoming over the outgoing: red 255 × 0.5 × 0.5, blue 255 × 0.5.
        QVERIFY2(qAbs(qRed(mid) - 64) <= 3 && qAbs(qBlue(mid) - 128) <= 3, qPrintable(QString::number(mid, 16)));
        s.progress = 0.9995;
        const QRgb end = OutputCompositor::makeImage(s, {100, 100}).pixel(50, 50);
        QCOMPARE(qRed(end), 0);
        QVERIFY(qBlue(end) >= 254);
        s.progress = -3;  // clamped: only the outgoing shows
        QVERIFY(near(OutputCompositor::makeImage(s, {100, 100}).pixel(50, 50), QColor(255, 0, 0)));
        s.progress = 3;  // clamped: only the incoming shows
        QVERIFY(near(OutputCompositor::makeImage(s, {100, 100}).pixel(50, 50), QColor(0, 0, 255)));
    }

    void framesWrittenDirectlyMatchThePainter()
    {
        // Frames the size of the slides take a one-pass blend; a clip sends
        // the same state through the painter. Both must give the same pixels,
        // within one step of rounding.
        auto incoming = gradient({37, 21}, 0);
        // A translucent patch goes the long way, mid-row.
        auto patched = std::make_shared<QImage>(*incoming);
        for (int y = 5; y < 9; ++y)
            for (int x = 6; x < 17; ++x)
                patched->setPixel(x, y, qPremultiply(qRgba(200, 100, 50, 40 * (x - 5))));
        const ImagePtr outgoing = gradient({37, 21}, 99);
        const ImagePtr narrow = gradient({28, 21}, 7);  // 4:3 on the 37×21 canvas: bars

        for (const QImage::Format format : {QImage::Format_ARGB32_Premultiplied, QImage::Format_RGB32})
            for (const ImagePtr& in : {ImagePtr(incoming), ImagePtr(patched)})
                for (const double progress : {0.0, 0.3, 0.5, 0.9995, 1.0}) {
                    OutputFrameState s;
                    s.incoming = in;
                    s.outgoing = outgoing;
                    s.progress = progress;
                    const int worst = blendError(s, format);
                    QVERIFY2(worst <= 1, qPrintable(QStringLiteral("progress %1, format %3, patched %4: off by %2").arg(progress).arg(worst).arg(int(format)).arg(in == patched)));
                }
        OutputFrameState bars;
        bars.incoming = narrow;
        bars.progress = 0.6;
        QVERIFY(blendError(bars) <= 1);
        const QImage barred = drawn(bars, {37, 21}, QImage::Format_ARGB32_Premultiplied, false);
        QCOMPARE(barred.pixel(0, 10), qRgb(0, 0, 0));
        QCOMPARE(barred.pixel(36, 10), qRgb(0, 0, 0));
        // A slide a pixel short of the canvas sits half a pixel off the grid.
        OutputFrameState offGrid;
        offGrid.incoming = gradient({37, 20}, 3);
        offGrid.outgoing = gradient({37, 20}, 50);
        offGrid.progress = 0.4;
        QVERIFY(blendError(offGrid) <= 1);
        // A painter with a window of its own scales the canvas: only the
        // painter knows where the slide lands.
        const auto windowed = [](const OutputFrameState& s, bool clip) {
            QImage image(40, 40, QImage::Format_RGB32);
            QPainter p(&image);
            p.setWindow(0, 0, 20, 20);
            if (clip)
                p.setClipRect(QRect(0, 0, 40, 40));
            OutputCompositor::draw(s, p, QSizeF(40, 40));
            return image;
        };
        OutputFrameState halves;
        halves.incoming = gradient({40, 40}, 11);
        const QImage scaledUp = windowed(halves, false);
        QVERIFY(worstDifference(scaledUp, windowed(halves, true)) <= 1);
        QVERIFY(near(scaledUp.pixel(39, 39), QColor(halves.incoming->pixel(19, 19)), 8));
        // The outgoing slide of another shape: the painter does it all.
        bars.outgoing = outgoing;
        QVERIFY(blendError(bars) <= 1);
    }

    void oneWayBlendMatchesThePainterOnMixedShapes()
    {
        // Many canvases and slides, fixed seed: odd sizes, slides a pixel off
        // the canvas either way, contain and cover, both frame formats,
        // translucent slides and slides with a pixel ratio of their own. The
        // one-pass blend must never differ from the painter by more than
        // rounding.
        std::mt19937 rng(7);
        const auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
        const QImage::Format formats[] = {QImage::Format_ARGB32_Premultiplied, QImage::Format_RGB32};
        for (int round = 0; round < 1500; ++round) {
            const QSize canvas(pick(2, 41), pick(2, 41));
            QSize slide = canvas;
            switch (pick(0, 4)) {
            case 0: slide.setHeight(pick(1, canvas.height())); break;
            case 1: slide.setWidth(pick(1, canvas.width())); break;
            case 2: slide += QSize(pick(-1, 1), pick(-1, 1)); break;
            case 3: slide.setHeight(canvas.height() + pick(1, 4)); break;
            default: break;
            }
            slide = slide.expandedTo(QSize(1, 1));
            const bool translucent = pick(0, 2) == 0;
            const auto make = [&](QImage::Format format) {
                auto image = std::make_shared<QImage>(slide, format);
                for (int y = 0; y < slide.height(); ++y)
                    for (int x = 0; x < slide.width(); ++x) {
                        const int alpha = translucent && format == formats[0] ? pick(0, 255) : 255;
                        image->setPixel(x, y, qPremultiply(qRgba(pick(0, 255), pick(0, 255), pick(0, 255), alpha)));
                    }
                if (pick(0, 3) == 0)
                    image->setDevicePixelRatio(2);
                return image;
            };
            OutputFrameState s;
            s.incoming = make(formats[pick(0, 1)]);
            if (pick(0, 1))
                s.outgoing = make(formats[pick(0, 1)]);
            const double progresses[] = {0, 0.004, 0.1, 0.5, 0.73, 0.9989, 0.9995, 1};
            s.progress = progresses[pick(0, 7)];
            s.fit = pick(0, 1) ? ContentFit::cover : ContentFit::contain;
            const QImage::Format format = formats[pick(0, 1)];
            const int worst = worstDifference(drawn(s, canvas, format, false), drawn(s, canvas, format, true));
            QVERIFY2(worst <= 2, qPrintable(QStringLiteral("round %1: canvas %2×%3, slide %4×%5, off by %6")
                                                .arg(round).arg(canvas.width()).arg(canvas.height())
                                                .arg(slide.width()).arg(slide.height()).arg(worst)));
        }
    }

    void slidesAreSmoothedWhenThePixelRatioScalesThem()
    {
        // A 20-pixel slide on a 20-unit canvas of a ratio-2 bitmap is drawn
        // 40 pixels wide: the hard edge in its middle must be interpolated.
        auto image = std::make_shared<QImage>(QSize(20, 20), QImage::Format_RGB32);
        image->fill(Qt::black);
        QPainter(image.get()).fillRect(0, 0, 10, 20, Qt::white);
        OutputFrameState s;
        s.incoming = image;
        QImage target(40, 40, QImage::Format_ARGB32_Premultiplied);
        target.setDevicePixelRatio(2);
        {
            QPainter p(&target);
            OutputCompositor::draw(s, p, QSizeF(20, 20));
        }
        QVERIFY(count(target, QRect(0, 20, 40, 1), [](QRgb p) { return qRed(p) > 30 && qRed(p) < 225; }) >= 1);
        QVERIFY(near(target.pixel(2, 20), Qt::white));
        QVERIFY(near(target.pixel(37, 20), Qt::black));
    }

    // Each mark lands where its normalised position puts it, at its width,
    // on bitmaps of every pixel ratio, through the one-pass blend and
    // through the painter alike.
    void marksLandAtEveryPixelRatio_data()
    {
        QTest::addColumn<double>("ratio");
        QTest::addColumn<bool>("clip");
        for (const double ratio : pixelRatios)
            for (const bool clip : {false, true})
                QTest::addRow("ratio %g, %s", ratio, clip ? "painter" : "one-pass blend") << ratio << clip;
    }

    void marksLandAtEveryPixelRatio()
    {
        QFETCH(double, ratio);
        QFETCH(bool, clip);
        const QSizeF canvas(200, 120);
        const QSize pixels = (canvas * ratio).toSize();
        bool direct = false;
        const QImage image = drawnAtRatio(markedUp(solid(pixels, QColor(40, 40, 40))), canvas, ratio, clip, &direct);
        QCOMPARE(direct, !clip);
        const auto px = [&](double units) { return units * ratio; };
        const auto at = [&](double units) { return int(units * ratio); };
        const double stroke = 0.04 * 120;  // lineWidth × the shorter side
        const double frameLine = 3;        // max(0.007 × 120, 3)
        const int bottom = pixels.height() - 1;
        const int right = pixels.width() - 1;

        const struct {
            const char* mark;
            TestPdf::Span span;
            double centre, length;
        } measured[] = {
            {"stroke", TestPdf::spanAlong(image, true, at(40), 0, at(60), isGreen), px(30), px(stroke)},
            {"stroke in the right half", TestPdf::spanAlong(image, false, at(60), at(100), right, isRed), px(150),
             px(stroke)},
            {"draft stroke", TestPdf::spanAlong(image, true, at(40), at(60), bottom, isBlue), px(102), px(stroke)},
            {"frame's left edge", TestPdf::spanAlong(image, false, at(96), at(100), at(120), isYellow), px(110),
             px(frameLine)},
            {"draft frame's top edge", TestPdf::spanAlong(image, true, at(120), 0, at(24), isMagenta), px(12),
             px(frameLine)},
            {"laser core", TestPdf::spanAlong(image, false, at(66), 0, at(100), isMagenta), px(60), px(12)},
            {"laser glow", TestPdf::spanAlong(image, false, at(66), 0, at(100), isGlow), px(60), px(34)},
        };
        for (const auto& m : measured) {
            const QString off = offBy(m.span, m.centre, m.length);
            QVERIFY2(off.isEmpty(), qPrintable(QStringLiteral("%1: %2").arg(m.mark, off)));
        }

        // Zoomed twice about (0.2, 0.25): the stroke passes through the middle
        // of the canvas, twice as wide.
        OutputFrameState zoomed = markedUp(solid(pixels, QColor(40, 40, 40)));
        zoomed.zoomScale = 2;
        zoomed.zoomCenter = QPointF(0.2, 0.25);
        const QImage zoomedImage = drawnAtRatio(zoomed, canvas, ratio, clip);
        const QString off = offBy(TestPdf::spanAlong(zoomedImage, true, at(100), 0, bottom, isGreen), px(60), px(2 * stroke));
        QVERIFY2(off.isEmpty(), qPrintable(QStringLiteral("zoomed stroke: ") + off));
    }

    // The one-pass blend gives the painter's pixels at every pixel ratio: a
    // fade between slides the frame's pixel size, and 4:3 slides with bars.
    void oneWayBlendMatchesThePainterAtEveryPixelRatio_data()
    {
        QTest::addColumn<double>("ratio");
        for (const double ratio : pixelRatios)
            QTest::addRow("ratio %g", ratio) << ratio;
    }

    void oneWayBlendMatchesThePainterAtEveryPixelRatio()
    {
        QFETCH(double, ratio);
        const QSizeF canvas(200, 120);
        for (const QSizeF slide : {canvas, QSizeF(160, 120)}) {
            const QSize pixels = (slide * ratio).toSize();
            for (const double progress : {0.4, 1.0}) {
                OutputFrameState s = markedUp(gradient(pixels, 5));
                s.outgoing = gradient(pixels, 120);
                s.progress = progress;
                bool direct = false;
                const QImage blended = drawnAtRatio(s, canvas, ratio, false, &direct);
                QVERIFY(direct);
                const int worst = worstDifference(blended, drawnAtRatio(s, canvas, ratio, true));
                QVERIFY2(worst <= 2, qPrintable(QStringLiteral("slide %1×%2, progress %3: off by %4")
                                                    .arg(slide.width()).arg(slide.height()).arg(progress).arg(worst)));
            }
        }
    }

    void zoom()
    {
        // Left half white, right half black.
        auto image = std::make_shared<QImage>(QSize(100, 100), QImage::Format_ARGB32_Premultiplied);
        image->fill(Qt::black);
        QPainter(image.get()).fillRect(0, 0, 50, 100, Qt::white);
        OutputFrameState s;
        s.incoming = image;
        s.zoomCenter = QPointF(0, 0);
        s.zoomScale = 1.02;
        const QImage none = OutputCompositor::makeImage(s, {100, 100});
        QVERIFY(near(none.pixel(10, 10), Qt::white));
        QVERIFY(near(none.pixel(90, 10), Qt::black));
        s.zoomScale = 1.5;
        s.zoomCenter.reset();  // a scale without a centre draws no zoom
        QCOMPARE(OutputCompositor::makeImage(s, {100, 100}), none);
        s.zoomCenter = QPointF(0, 0);
        const QImage zoomed = OutputCompositor::makeImage(s, {100, 100});
        // The top-left corner moved to the middle: above and left of it is black.
        QVERIFY(near(zoomed.pixel(40, 40), Qt::black));
        QVERIFY(near(zoomed.pixel(60, 60), Qt::white));
        // 1.5 × 50 = 75 pixels of white to the right of the middle, cut at 100.
        QVERIFY(near(zoomed.pixel(98, 60), Qt::white));
        s.zoomCenter = QPointF(2, -1);  // clamped to (1, 0)
        const QImage clamped = OutputCompositor::makeImage(s, {100, 100});
        QVERIFY(near(clamped.pixel(40, 60), Qt::black));
        QVERIFY(near(clamped.pixel(60, 40), Qt::black));
    }

    void strokesAndFrames()
    {
        OutputFrameState s;
        Stroke dot{QUuid::createUuid(), {{0.5, 0.5}}, 1, 1, 1, 0.05};
        s.strokes = {dot};
        QCOMPARE(countColoured(OutputCompositor::makeImage(s, {200, 100})), 0);

        // Width 0 still draws 2 units: a horizontal line covers 2 rows.
        s.strokes = {Stroke{QUuid::createUuid(), {{0.1, 0.5}, {0.9, 0.5}}, 1, 1, 1, 0}};
        const QImage line = OutputCompositor::makeImage(s, {200, 100});
        QCOMPARE(count(line, QRect(100, 40, 1, 20), [](QRgb p) { return qRed(p) > 100; }), 2);

        // A frame one unit wide is skipped; a reversed one is drawn standardised.
        s.strokes.clear();
        s.frames = {FrameRect{QUuid::createUuid(), QRectF(0.5, 0.2, 0.004, 0.5), 0, 1, 0}};
        QCOMPARE(countColoured(OutputCompositor::makeImage(s, {200, 100})), 0);
        s.frames.clear();
        s.draftFrame = QRectF(0.8, 0.8, -0.6, -0.6);
        const QImage frame = OutputCompositor::makeImage(s, {200, 100});
        QVERIFY(qRed(frame.pixel(40, 50)) > 200);   // left edge at x = 40, in the accent colour
        QVERIFY(qRed(frame.pixel(100, 50)) > 10);   // faint fill inside
        QVERIFY(qRed(frame.pixel(100, 50)) < 60);
        QCOMPARE(frame.pixel(10, 50) & 0xFFFFFF, 0u);
    }

    void markupFollowsThePaintersWindow()
    {
        // A painter whose window maps a 20-unit canvas onto 40 pixels: the
        // stroke, frame and laser all land at twice their canvas position.
        OutputFrameState s;
        s.strokes = {Stroke{QUuid::createUuid(), {{0.75, 0.1}, {0.75, 0.9}}, 0, 1, 0, 0.05}};
        s.frames = {FrameRect{QUuid::createUuid(), QRectF(0.1, 0.1, 0.3, 0.3), 0, 0, 1}};
        QImage image(40, 40, QImage::Format_ARGB32_Premultiplied);
        {
            QPainter p(&image);
            p.setWindow(0, 0, 20, 20);
            OutputCompositor::draw(s, p, QSizeF(20, 20));
        }
        QVERIFY(qGreen(image.pixel(30, 20)) > 150);   // the stroke at x = 0.75 × 40
        QCOMPARE(qGreen(image.pixel(15, 20)), 0);     // not at 0.75 × 20
        QVERIFY(qBlue(image.pixel(4, 10)) > 150);     // the frame's left edge at 0.1 × 40
    }

    void laserKeepsItsSizeOnAnyCanvas()
    {
        for (const QSize size : {QSize(400, 225), QSize(2560, 1440)}) {
            OutputFrameState s;
            s.laserPoint = QPointF(0.5, 0.5);
            const QImage image = OutputCompositor::makeImage(s, size);
            const int cy = size.height() / 2;
            QCOMPARE(litWidth(image, cy), 34);
            // The opaque core is 12 across (edge pixels are antialiased).
            QCOMPARE(count(image, QRect(0, cy, image.width(), 1), [](QRgb p) { return qRed(p) > 160; }), 12);
        }
    }
};

QTEST_MAIN(OutputCompositorTest)
#include "tst_OutputCompositor.moc"
