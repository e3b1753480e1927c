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

// Arg 0: across into the next file (1) or within one (0). Arg 1: the slide
// after the current one was fully rendered before the press, as in a show
// (1), or the press comes at once on a freshly opened document (0), so it
// waits for the model's own ahead-render still running or renders itself.
void nextSlide(benchmark::State& state)
{
    const bool across = state.range(0) != 0;
    const bool ahead = state.range(1) != 0;
    for (auto _ : state) {
        state.PauseTiming();
        FakePlatform platform;
        AppModel model(platform.services());
        model.replacePlaylist({deckA, deckB});
        model.goToPage(across ? 29 : 10);
        if (ahead) {
            auto next = model.upcomingPage();
            (void)next->document->render(next->index, QSize(1920, 1080));
        }
        state.ResumeTiming();
        model.goToNextSlide();
        state.PauseTiming();
        if (model.playlistIndex() != (across ? 1 : 0))
            state.SkipWithError("did not move as expected");
        state.ResumeTiming();
    }
}
BENCHMARK(nextSlide)
    ->ArgNames({"across", "ahead"})
    ->Args({0, 0})->Args({0, 1})->Args({1, 0})->Args({1, 1})
    ->Iterations(40)->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true);

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
