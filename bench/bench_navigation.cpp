// How long a clicker press takes in the model: the next slide within one
// file, and across the boundary into the next file of the set. Both include
// rendering the new slide at the output size (ahead-rendered when possible).
#include "model/AppModel.h"
#include "support/FakePlatform.h"
#include "support/TestPdf.h"

#include <QGuiApplication>

#include <benchmark/benchmark.h>

namespace {

TestFolder* folder = nullptr;
QString deckA;
QString deckB;

void nextWithinFile(benchmark::State& state)
{
    FakePlatform platform;
    AppModel model(platform.services());
    model.replacePlaylist({deckA});
    for (auto _ : state) {
        if (!model.canGoNext()) {
            state.PauseTiming();
            model.goToPage(0);
            state.ResumeTiming();
        }
        model.goToNextSlide();
        state.PauseTiming();
        // Let a render ahead finish as it would between two presses.
        if (auto next = model.upcomingPage())
            (void)next->document->render(next->index, QSize(1920, 1080));
        state.ResumeTiming();
    }
}
BENCHMARK(nextWithinFile)->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true);

void nextAcrossFiles(benchmark::State& state)
{
    FakePlatform platform;
    AppModel model(platform.services());
    model.replacePlaylist({deckA, deckB});
    for (auto _ : state) {
        state.PauseTiming();
        model.selectPlaylistItem(model.playlist()[0].id);
        model.goToPage(29);
        if (auto next = model.upcomingPage())
            (void)next->document->render(next->index, QSize(1920, 1080));
        state.ResumeTiming();
        model.goToNextSlide();
    }
}
BENCHMARK(nextAcrossFiles)->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true);

}

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    TestFolder f;
    folder = &f;
    deckA = f.pdf("a.pdf", 30);
    deckB = f.pdf("b.pdf", 30);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
