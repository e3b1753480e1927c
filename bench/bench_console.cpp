// The console's responsiveness, as the operator feels it (prints figures):
// - press to stage: from a next-slide press (what the clicker calls) to the
//   stage canvas painted with the new slide, median and p95 over a real deck,
//   with the console idle and while a thumbnail pass runs;
// - the main thread's longest stall while a 100-page deck's thumbnails
//   render (a 1 ms timer notes every gap between its ticks).
// Usage: bench_console [DECK.pdf]   (default: a deck from /tmp/decks)
// Run with QT_QPA_PLATFORM=offscreen, or on Xvfb for real window paints.
#include "model/AppModel.h"
#include "platform/QtScheduler.h"
#include "stage/StageCanvas.h"
#include "support/FakePlatform.h"
#include "support/TestPdf.h"
#include "ui/console/ConsoleWindow.h"
#include "ui/console/StageView.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>
#include <ctime>
#include <cstdio>
#include <vector>

namespace {

// Counts the stage canvas's paints.
class PaintCounter : public QObject {
public:
    int paints = 0;
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            ++paints;
        return false;
    }
};

// CPU time of the calling (main) thread, ms: unlike wall time it does not
// grow when other processes share the cores.
double threadCpuMs()
{
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) * 1e3 + double(t.tv_nsec) / 1e6;
}

double percentile(std::vector<double> values, double p)
{
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    const auto index = static_cast<std::size_t>(p * double(values.size() - 1) + 0.5);
    return values[std::min(index, values.size() - 1)];
}

struct Console {
    FakePlatform fakes;
    PlatformServices services;
    std::unique_ptr<AppModel> model;
    std::unique_ptr<ConsoleWindow> window;
    PaintCounter counter;
    std::vector<double> modelMs;  // the model's own part of each press
    std::vector<double> cpuMs;    // the main thread's CPU time per press

    Console()
    {
        services = fakes.services();
        services.scheduler = std::make_shared<QtScheduler>();  // real timers: thumbnails run on the event loop
        model = std::make_unique<AppModel>(services);
        window = std::make_unique<ConsoleWindow>(*model);
        window->resize(1180, 760);
        window->show();
        window->stage()->canvas()->installEventFilter(&counter);
    }

    // Press next and wait until the stage painted; milliseconds.
    double press()
    {
        const int before = counter.paints;
        const double cpu = threadCpuMs();
        QElapsedTimer clock;
        clock.start();
        model->goToNextSlide();
        modelMs.push_back(double(clock.nsecsElapsed()) / 1e6);
        while (counter.paints == before && clock.elapsed() < 5000)
            QCoreApplication::processEvents(QEventLoop::AllEvents);
        cpuMs.push_back(threadCpuMs() - cpu);
        return double(clock.nsecsElapsed()) / 1e6;
    }

    void idle(int ms)
    {
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < ms)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }
};

void pressToStage(const QString& deck, bool duringThumbnails)
{
    Console c;
    std::vector<double> times;
    for (int round = 0; round < 4; ++round) {
        c.model->replacePlaylist({deck});
        if (!duringThumbnails)
            c.idle(1500);  // let the thumbnail pass finish
        const int presses = c.model->pageCount() - 1;
        for (int i = 0; i < presses; ++i) {
            if (!duringThumbnails)
                c.idle(400);  // the next slide renders ahead, as between real presses
            times.push_back(c.press());
        }
    }
    std::printf("press to stage (%s), %zu presses: median %.2f ms, p95 %.2f ms, max %.2f ms"
                " (of which the model's move: median %.2f ms, p95 %.2f ms; main-thread CPU per press:"
                " median %.2f ms, p95 %.2f ms)\n",
                duringThumbnails ? "thumbnail pass running" : "idle", times.size(), percentile(times, 0.5),
                percentile(times, 0.95), percentile(times, 1.0), percentile(c.modelMs, 0.5), percentile(c.modelMs, 0.95),
                percentile(c.cpuMs, 0.5), percentile(c.cpuMs, 0.95));
}

void longestStall(const QString& deck)
{
    Console c;
    c.idle(200);
    QElapsedTimer clock;
    double last = 0;
    double worst = 0;
    QTimer ticker;
    ticker.setTimerType(Qt::PreciseTimer);
    ticker.setInterval(1);
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        const double now = double(clock.nsecsElapsed()) / 1e6;
        worst = std::max(worst, now - last);
        last = now;
    });
    clock.start();
    ticker.start();
    c.model->replacePlaylist({deck});
    const double opened = double(clock.nsecsElapsed()) / 1e6;
    while (c.model->thumbnails.peek().size() < std::size_t(c.model->pageCount()) && clock.elapsed() < 120000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    const double done = double(clock.nsecsElapsed()) / 1e6;
    std::printf("thumbnails of %d pages: open %.1f ms, all rendered after %.0f ms; longest main-thread stall %.1f ms\n",
                c.model->pageCount(), opened, done, worst);
}

}

int main(int argc, char** argv)
{
    QApplication app(argc, argv);
    QString deck = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("/tmp/decks/tug2005-keynote.pdf");
    if (!QFileInfo::exists(deck)) {
        std::fprintf(stderr, "no deck at %s\n", qPrintable(deck));
        return 1;
    }
    std::printf("deck: %s\n", qPrintable(deck));
    pressToStage(deck, false);
    pressToStage(deck, true);
    TestFolder folder;
    const QString hundred = folder.pdf(QStringLiteral("hundred.pdf"), 100);
    longestStall(hundred);
    return 0;
}
