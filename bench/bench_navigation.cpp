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

// `ahead`: the slide after the current one was rendered between presses, as
// in a show. Otherwise every press renders its slide from a fresh document.
void nextWithinFile(benchmark::State& state)
{
    const bool ahead = state.range(0) != 0;
    for (auto _ : state) {
        state.PauseTiming();
        FakePlatform platform;
        AppModel model(platform.services());
        model.replacePlaylist({deckA});
        model.goToPage(10);
        if (ahead) {
            auto next = model.upcomingPage();
            (void)next->document->render(next->index, QSize(1920, 1080));
        }
        state.ResumeTiming();
        model.goToNextSlide();
        state.PauseTiming();
        if (model.pageIndex() != 11)
            state.SkipWithError("did not move");
        state.ResumeTiming();
    }
}
BENCHMARK(nextWithinFile)->Arg(0)->Arg(1)->Iterations(40)->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true);

void nextAcrossFiles(benchmark::State& state)
{
    const bool ahead = state.range(0) != 0;
    for (auto _ : state) {
        state.PauseTiming();
        FakePlatform platform;
        AppModel model(platform.services());
        model.replacePlaylist({deckA, deckB});
        model.goToPage(29);
        if (ahead) {
            auto next = model.upcomingPage();
            (void)next->document->render(next->index, QSize(1920, 1080));
        }
        state.ResumeTiming();
        model.goToNextSlide();
        state.PauseTiming();
        if (model.playlistIndex() != 1)
            state.SkipWithError("did not cross");
        state.ResumeTiming();
    }
}
BENCHMARK(nextAcrossFiles)->Arg(0)->Arg(1)->Iterations(40)->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true);

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
