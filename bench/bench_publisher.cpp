// The video source's cost: main-thread time per published frame (hand-over
// alone and with compositing), the YUV conversion, the CPU share of a 30 Hz
// live run with one consumer, and the main thread's longest stall while the
// output window and the publisher both run at 2560×1440. Starts its own
// private PipeWire (as the tests do). Prints figures; no pass/fail.
#include "model/AppModel.h"
#include "output/FramePublisher.h"
#include "output/FrameWorker.h"
#include "output/OutputContentView.h"
#include "platform/PipeWireFrameSink.h"
#include "platform/QtScheduler.h"
#include "platform/PixelConversion.h"
#include "support/FakePlatform.h"
#include "support/PipeWireSession.h"

#include <QApplication>
#include <QEventLoop>
#include <QPainter>
#include <QProcess>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <sys/resource.h>

namespace {

double nowMs()
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

double threadCpuMs()
{
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) * 1000.0 + double(t.tv_nsec) / 1e6;
}

double cpuSeconds()
{
    rusage u{};
    getrusage(RUSAGE_SELF, &u);
    return double(u.ru_utime.tv_sec + u.ru_stime.tv_sec) + double(u.ru_utime.tv_usec + u.ru_stime.tv_usec) / 1e6;
}

// Runs the event loop, idle between events as the program is.
void runFor(int ms)
{
    QEventLoop loop;
    QTimer::singleShot(ms, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

// A slide like a real one: a photo-like gradient with lines of text.
ImagePtr slide(QSize size, QColor tint)
{
    auto image = std::make_shared<QImage>(size, QImage::Format_ARGB32_Premultiplied);
    QPainter p(image.get());
    QLinearGradient g(0, 0, size.width(), size.height());
    g.setColorAt(0, tint);
    g.setColorAt(1, tint.darker(300));
    p.fillRect(image->rect(), g);
    p.setPen(Qt::white);
    QFont f = p.font();
    f.setPixelSize(size.height() / 20);
    p.setFont(f);
    for (int i = 0; i < 10; ++i)
        p.drawText(size.width() / 10, size.height() / 6 + i * size.height() / 14, QStringLiteral("Line of slide text %1").arg(i));
    return image;
}

struct Stats {
    double median = 0, p95 = 0, max = 0;
};

Stats stats(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    if (v.empty())
        return {};
    return {v[v.size() / 2], v[std::min(v.size() - 1, v.size() * 95 / 100)], v.back()};
}

struct Rig {
    FakePlatform platform;
    std::shared_ptr<PipeWireFrameSink> sink = std::make_shared<PipeWireFrameSink>();
    std::shared_ptr<FrameWorker> worker = std::make_shared<FrameWorker>();
    std::unique_ptr<AppModel> model;

    explicit Rig(QSize size)
    {
        PlatformServices s = platform.services();
        s.scheduler = std::make_shared<QtScheduler>();
        s.frameSink = sink;
        s.makeFramePublisher = [this, scheduler = s.scheduler] {
            return std::make_unique<FramePublisher>(sink, scheduler, worker);
        };
        model = std::make_unique<AppModel>(s);
        model->aspect.set(AspectMode::custom);
        model->customWidth.set(size.width());
        model->customHeight.set(size.height());
        model->incomingSlideImage.set(slide(size, QColor(40, 90, 160)));
        model->start();
    }
};

void handOver(QSize size)
{
    Rig rig(size);
    rig.model->setTool(StageTool::laser);
    runFor(300);
    FramePublisher& publisher = *rig.model->framePublisher();
    std::vector<double> excluded, included, excludedCpu, includedCpu;
    for (int i = 0; i < 60; ++i) {
        // Worker path: the main thread copies the state and hands it over.
        rig.model->isOutputVisible.set(false);
        rig.model->laserPoint.set(QPointF(0.3 + i * 0.005, 0.5));
        double t0 = nowMs(), c0 = threadCpuMs();
        publisher.publish(true);
        excluded.push_back(nowMs() - t0);
        excludedCpu.push_back(threadCpuMs() - c0);
        rig.worker->waitIdle();
        // Shared with the window: composited here once, for both.
        rig.model->isOutputVisible.set(true);
        publisher.sharedFrame().noteWindowPixels(size);
        rig.model->laserPoint.set(QPointF(0.3 + i * 0.005, 0.6));
        t0 = nowMs();
        c0 = threadCpuMs();
        publisher.publish(true);
        included.push_back(nowMs() - t0);
        includedCpu.push_back(threadCpuMs() - c0);
        runFor(5);
    }
    const Stats a = stats(excluded), b = stats(included), ac = stats(excludedCpu), bc = stats(includedCpu);
    std::printf("publish %dx%d  main thread, compositing on the worker: median %.3f ms wall, %.3f ms cpu; p95 %.3f ms wall\n",
                size.width(), size.height(), a.median, ac.median, a.p95);
    std::printf("publish %dx%d  main thread, compositing included:    median %.2f ms wall, %.2f ms cpu; p95 %.2f ms wall\n",
                size.width(), size.height(), b.median, bc.median, b.p95);
}

void yuv(QSize size)
{
    const ImagePtr image = slide(size, QColor(200, 80, 40));
    std::vector<uint8_t> out(size_t(size.width()) * 2 * size_t(size.height()));
    std::vector<double> times;
    for (int i = 0; i < 30; ++i) {
        const double t0 = nowMs();
        PixelConversion::bgraToYuy2(image->constBits(), int(image->bytesPerLine()), out.data(), size.width() * 2,
                                    size.width(), size.height());
        times.push_back(nowMs() - t0);
    }
    std::printf("YUY2 conversion %dx%d: median %.2f ms\n", size.width(), size.height(), stats(times).median);
}

QProcess* startConsumer(const PipeWireSession& session)
{
    auto* consumer = new QProcess;
    consumer->setProcessEnvironment(session.environment());
    consumer->start(QStringLiteral("gst-launch-1.0"),
                    QStringLiteral("-q pipewiresrc target-object=pdf-brelvonic ! video/x-raw,format=BGRA ! fakesink sync=false")
                        .split(u' '));
    consumer->waitForStarted();
    return consumer;
}

void endConsumer(QProcess* consumer)
{
    consumer->terminate();
    if (!consumer->waitForFinished(5000)) {
        consumer->kill();
        consumer->waitForFinished();
    }
    delete consumer;
}

void liveShare(const PipeWireSession& session, QSize size, bool moving)
{
    Rig rig(size);
    QProcess* consumer = startConsumer(session);
    runFor(2000);
    rig.model->setTool(StageTool::laser);
    rig.model->laserPoint.set(QPointF(0.5, 0.5));
    // Moving: a new laser position every frame, so every frame is composited.
    int step = 0;
    QTimer mover;
    QObject::connect(&mover, &QTimer::timeout, [&] {
        ++step;
        rig.model->laserPoint.set(QPointF(0.5 + 0.3 * std::sin(step / 10.0), 0.5));
    });
    if (moving)
        mover.start(33);
    runFor(500);
    const quint64 sent0 = rig.sink->framesSent();
    const double cpu0 = cpuSeconds();
    const double main0 = threadCpuMs();
    const double t0 = nowMs();
    runFor(5000);
    const double wall = (nowMs() - t0) / 1000.0;
    const double cpu = cpuSeconds() - cpu0;
    const double mainCpu = (threadCpuMs() - main0) / 1000.0;
    const double fps = double(rig.sink->framesSent() - sent0) / wall;
    std::printf("live 30 Hz %dx%d, laser %s, one consumer: %.1f %% of one core (this process, all threads; main thread %.1f %%), %.1f frames/s delivered\n",
                size.width(), size.height(), moving ? "moving" : "idle", 100.0 * cpu / wall, 100.0 * mainCpu / wall, fps);
    endConsumer(consumer);
}

// The same probe with nothing running: what the machine's load alone costs.
void baselineStall()
{
    double last = nowMs(), worst = 0;
    QTimer probe;
    probe.setTimerType(Qt::PreciseTimer);
    QObject::connect(&probe, &QTimer::timeout, [&] {
        const double t = nowMs();
        worst = std::max(worst, t - last);
        last = t;
    });
    probe.start(1);
    runFor(3000);
    std::printf("baseline (nothing running): longest main-thread stall %.1f ms\n", worst);
}

void longestStall(const PipeWireSession& session, QSize size, bool sameSize)
{
    Rig rig(size);
    rig.model->isOutputVisible.set(true);
    OutputContentView window(*rig.model);
    // The window at the published size, or a little smaller (composited twice).
    window.resize(sameSize ? size : size * 0.9);
    window.show();
    QProcess* consumer = startConsumer(session);
    runFor(1500);
    rig.model->setTool(StageTool::laser);
    // The laser moves every frame, as under a hand.
    int step = 0;
    QTimer mover;
    QObject::connect(&mover, &QTimer::timeout, [&] {
        ++step;
        rig.model->laserPoint.set(QPointF(0.5 + 0.3 * std::sin(step / 10.0), 0.5 + 0.2 * std::cos(step / 13.0)));
    });
    mover.start(33);
    // A key press is answered on the next turn of the event loop: the longest
    // gap between turns is the longest wait for it.
    double last = nowMs(), worst = 0;
    std::vector<double> gaps;
    QTimer probe;
    probe.setTimerType(Qt::PreciseTimer);
    QObject::connect(&probe, &QTimer::timeout, [&] {
        const double t = nowMs();
        gaps.push_back(t - last);
        worst = std::max(worst, t - last);
        last = t;
    });
    probe.start(1);
    const quint64 sent0 = rig.sink->framesSent();
    const double t0 = nowMs();
    runFor(5000);
    const double fps = double(rig.sink->framesSent() - sent0) / ((nowMs() - t0) / 1000.0);
    std::printf("window %s + publisher at %dx%d, laser moving: longest main-thread stall %.1f ms, p99 %.1f ms, %.1f frames/s delivered\n",
                sameSize ? "same size" : "other size", size.width(), size.height(), worst,
                [&] { std::sort(gaps.begin(), gaps.end()); return gaps[gaps.size() * 99 / 100]; }(), fps);
    endConsumer(consumer);
}

}

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    PipeWireSession session;
    session.useInThisProcess();
    QApplication app(argc, argv);
    if (!session.start()) {
        std::printf("no private PipeWire could be started\n");
        return 1;
    }
    yuv({1920, 1080});
    yuv({2560, 1440});
    handOver({1920, 1080});
    handOver({2560, 1440});
    liveShare(session, {1920, 1080}, false);
    liveShare(session, {1920, 1080}, true);
    baselineStall();
    longestStall(session, {2560, 1440}, true);
    longestStall(session, {2560, 1440}, false);
    return 0;
}
