#include "output/OutputCompositor.h"

#include <QPainter>
#include <QtTest>

#include <random>

namespace {
ImagePtr solid(QSize size, QColor colour)
{
    auto image = std::make_shared<QImage>(size, QImage::Format_ARGB32_Premultiplied);
    image->fill(colour);
    return image;
}

bool near(QRgb pixel, QColor want, int tolerance = 3)
{
    return qAbs(qRed(pixel) - want.red()) <= tolerance && qAbs(qGreen(pixel) - want.green()) <= tolerance
        && qAbs(qBlue(pixel) - want.blue()) <= tolerance;
}

int countColoured(const QImage& image)
{
    int n = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            n += (image.pixel(x, y) & 0xFFFFFF) != 0;
    return n;
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

// Width of the non-black run along the middle row.
int litWidth(const QImage& image, int y)
{
    int n = 0;
    for (int x = 0; x < image.width(); ++x)
        n += (image.pixel(x, y) & 0xFFFFFF) != 0;
    return n;
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
        const auto viaPainter = [](const OutputFrameState& s, QSize size, QImage::Format format) {
            QImage image(size, format);
            image.fill(Qt::green);
            QPainter p(&image);
            p.setClipRect(QRect(QPoint(0, 0), size));
            OutputCompositor::draw(s, p, QSizeF(size));
            return image;
        };
        const auto direct = [](const OutputFrameState& s, QSize size, QImage::Format format) {
            QImage image(size, format);
            image.fill(Qt::green);
            QPainter p(&image);
            OutputCompositor::draw(s, p, QSizeF(size));
            return image;
        };
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
                    const int worst = worstDifference(direct(s, {37, 21}, format), viaPainter(s, {37, 21}, format));
                    QVERIFY2(worst <= 1, qPrintable(QStringLiteral("progress %1, format %3, patched %4: off by %2").arg(progress).arg(worst).arg(int(format)).arg(in == patched)));
                }
        OutputFrameState bars;
        bars.incoming = narrow;
        bars.progress = 0.6;
        const QImage barred = direct(bars, {37, 21}, QImage::Format_ARGB32_Premultiplied);
        QVERIFY(worstDifference(barred, viaPainter(bars, {37, 21}, QImage::Format_ARGB32_Premultiplied)) <= 1);
        QCOMPARE(barred.pixel(0, 10), qRgb(0, 0, 0));
        QCOMPARE(barred.pixel(36, 10), qRgb(0, 0, 0));
        // A slide a pixel short of the canvas sits half a pixel off the grid.
        OutputFrameState offGrid;
        offGrid.incoming = gradient({37, 20}, 3);
        offGrid.outgoing = gradient({37, 20}, 50);
        offGrid.progress = 0.4;
        QVERIFY(worstDifference(direct(offGrid, {37, 21}, QImage::Format_ARGB32_Premultiplied),
                                viaPainter(offGrid, {37, 21}, QImage::Format_ARGB32_Premultiplied))
                <= 1);
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
        QVERIFY(worstDifference(direct(bars, {37, 21}, QImage::Format_ARGB32_Premultiplied),
                                viaPainter(bars, {37, 21}, QImage::Format_ARGB32_Premultiplied))
                <= 1);
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
            const auto drawn = [&](bool clip) {
                QImage image(canvas, format);
                image.fill(Qt::green);
                QPainter p(&image);
                if (clip)
                    p.setClipRect(QRect(QPoint(0, 0), canvas));
                OutputCompositor::draw(s, p, QSizeF(canvas));
                return image;
            };
            const int worst = worstDifference(drawn(false), drawn(true));
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
        int between = 0;
        for (int x = 0; x < 40; ++x)
            between += qRed(target.pixel(x, 20)) > 30 && qRed(target.pixel(x, 20)) < 225;
        QVERIFY(between >= 1);
        QVERIFY(near(target.pixel(2, 20), Qt::white));
        QVERIFY(near(target.pixel(37, 20), Qt::black));
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
        int rows = 0;
        for (int y = 40; y < 60; ++y)
            rows += qRed(line.pixel(100, y)) > 100;
        QCOMPARE(rows, 2);

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
            int core = 0;
            for (int x = 0; x < image.width(); ++x)
                core += qRed(image.pixel(x, cy)) > 160;
            QCOMPARE(core, 12);
        }
    }

    void tinySizesMakeTwoByTwo()
    {
        QCOMPARE(OutputCompositor::makeImage(OutputFrameState{}, {0, 0}).size(), QSize(2, 2));
    }
};

QTEST_MAIN(OutputCompositorTest)
#include "tst_OutputCompositor.moc"
