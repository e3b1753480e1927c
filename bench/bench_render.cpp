// Render time of one page of a generated 30-page deck at the sizes the
// program asks for: thumbnails, a 1080p output and a 1440p output. "Cold"
// builds the page's display list too; "warm" reuses it (a new box size each
// time so the image cache does not answer).
#include "platform/MuPdfEngine.h"
#include "support/TestPdf.h"

#include <QGuiApplication>

#include <benchmark/benchmark.h>

namespace {

QString deck;

PdfDocumentPtr openDeck(MuPdfEngine& engine)
{
    auto result = engine.open(deck);
    return std::get<PdfDocumentPtr>(result);
}

void renderCold(benchmark::State& state)
{
    MuPdfEngine engine;
    const QSize box(int(state.range(0)), int(state.range(1)));
    PdfDocumentPtr doc = openDeck(engine);
    int page = 0;
    for (auto _ : state) {
        if (page == doc->pageCount()) {
            state.PauseTiming();
            doc = openDeck(engine);
            page = 0;
            state.ResumeTiming();
        }
        benchmark::DoNotOptimize(doc->render(page++, box));
    }
}

void renderWarm(benchmark::State& state)
{
    MuPdfEngine engine;
    PdfDocumentPtr doc = openDeck(engine);
    (void)doc->render(0, QSize(64, 64));
    int wiggle = 0;
    for (auto _ : state) {
        // A few pixels more or less defeat the image cache (it keeps fewer
        // than 64 images), not the display list.
        const QSize box(int(state.range(0)) - (wiggle++ % 64), int(state.range(1)));
        benchmark::DoNotOptimize(doc->render(0, box));
    }
}

void sizes(benchmark::internal::Benchmark* b)
{
    b->Args({320, 320})->Args({1920, 1080})->Args({2560, 1440});
    b->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true);
}

BENCHMARK(renderCold)->Apply(sizes);
BENCHMARK(renderWarm)->Apply(sizes);

}

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    TestFolder folder;
    deck = folder.pdf("deck.pdf", 30);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
