// One output frame mid-fade with markup: two slide images, 10 strokes,
// 3 frames and the laser. Drawn as the output window draws it (through its
// frame buffer onto a screen surface) and into the published-frame bitmap,
// where the slides are blended straight into the frame.
#include "output/OutputCompositor.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPixmap>

#include <benchmark/benchmark.h>

#include <cmath>

namespace {

ImagePtr slide(QSize size, QColor colour)
{
    auto image = std::make_shared<QImage>(size, QImage::Format_ARGB32_Premultiplied);
    image->fill(colour);
    QPainter p(image.get());
    p.setPen(Qt::black);
    for (int i = 0; i < 40; ++i)
        p.drawLine(0, i * size.height() / 40, size.width(), size.height() - i * size.height() / 40);
    return image;
}

OutputFrameState busyState(QSize size)
{
    OutputFrameState s;
    // Slides are rendered at the output size, as the model does.
    s.outgoing = slide(size, QColor(200, 120, 80));
    s.incoming = slide(size, QColor(80, 120, 200));
    s.progress = 0.5;
    for (int i = 0; i < 10; ++i) {
        Stroke stroke{QUuid::createUuid(), {}, 1, 0.16, 0.12, 0.008};
        for (int k = 0; k < 60; ++k)
            stroke.points.emplace_back(0.1 + 0.8 * k / 60.0, 0.1 + 0.08 * i + 0.03 * std::sin(k / 4.0));
        s.strokes.push_back(stroke);
    }
    for (int i = 0; i < 3; ++i)
        s.frames.push_back(FrameRect{QUuid::createUuid(), QRectF(0.1 + 0.25 * i, 0.6, 0.2, 0.25), 0.2, 0.8, 0.4});
    s.laserPoint = QPointF(0.5, 0.5);
    return s;
}

QSize sizeOf(const benchmark::State& state) { return {int(state.range(0)), int(state.range(1))}; }

void drawEach(benchmark::State& state, const OutputFrameState& s, QPaintDevice& target, QImage* buffer = nullptr)
{
    const QSizeF size(sizeOf(state));
    for (auto _ : state) {
        QPainter painter(&target);
        if (buffer)
            OutputCompositor::drawBuffered(s, painter, size, *buffer);
        else
            OutputCompositor::draw(s, painter, size);
        painter.end();
        benchmark::ClobberMemory();
    }
}

// The output window: its frame buffer laid on the window's surface (a pixmap
// here, like a backing store).
void screenFrame(benchmark::State& state)
{
    QPixmap target(sizeOf(state));
    QImage buffer;
    drawEach(state, busyState(sizeOf(state)), target, &buffer);
}

// The output window on a screen of pixel ratio 2: the sizes given are its
// pixels, and the slides, rendered at that pixel size, still take the
// one-pass blend.
void screenFrameAtRatio2(benchmark::State& state)
{
    const QSize pixels = sizeOf(state);
    QPixmap target(pixels);
    target.setDevicePixelRatio(2);
    QImage buffer;
    const OutputFrameState s = busyState(pixels);
    for (auto _ : state) {
        QPainter painter(&target);
        OutputCompositor::drawBuffered(s, painter, QSizeF(pixels) / 2, buffer);
        painter.end();
        benchmark::ClobberMemory();
    }
}

// The painter alone on a window's surface, for comparison.
void screenFrameUnbuffered(benchmark::State& state)
{
    QPixmap target(sizeOf(state));
    drawEach(state, busyState(sizeOf(state)), target);
}

void publishedFrame(benchmark::State& state)
{
    QImage target(sizeOf(state), QImage::Format_ARGB32_Premultiplied);
    drawEach(state, busyState(sizeOf(state)), target);
}

// Where the time goes in a published frame: each part alone.
enum Part { slides, strokes, frames, laser };

void part(benchmark::State& state, Part which)
{
    OutputFrameState s = busyState(sizeOf(state));
    if (which != slides) {
        s.incoming = nullptr;
        s.outgoing = nullptr;
    }
    if (which != strokes)
        s.strokes.clear();
    if (which != frames)
        s.frames.clear();
    if (which != laser)
        s.laserPoint.reset();
    QImage target(sizeOf(state), QImage::Format_ARGB32_Premultiplied);
    drawEach(state, s, target);
}

void sizes(benchmark::internal::Benchmark* b)
{
    b->Args({1920, 1080})->Args({2560, 1440})->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true);
}

BENCHMARK(screenFrame)->Apply(sizes);
BENCHMARK(screenFrameAtRatio2)->Apply(sizes);
BENCHMARK(publishedFrame)->Apply(sizes);
BENCHMARK(screenFrameUnbuffered)->Args({2560, 1440})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(part, slides, slides)->Args({2560, 1440})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(part, strokes, strokes)->Args({2560, 1440})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(part, frames, frames)->Args({2560, 1440})->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(part, laser, laser)->Args({2560, 1440})->Unit(benchmark::kMillisecond);

}

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
