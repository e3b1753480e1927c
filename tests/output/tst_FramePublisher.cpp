#include "model/AppModel.h"
#include "output/FramePublisher.h"
#include "output/FrameWorker.h"
#include "platform/PixelConversion.h"
#include "support/FakePlatform.h"
#include "support/TestPdf.h"

#include <QtTest>

#include <atomic>
#include <semaphore>

namespace {

ImagePtr solid(QColor colour, QSize size = {192, 108})
{
    auto image = std::make_shared<QImage>(size, QImage::Format_ARGB32_Premultiplied);
    image->fill(colour);
    return image;
}

// A model with a publisher over the fake sink; frames are composited on the
// caller's thread unless a worker is given.
struct PublishingModel {
    explicit PublishingModel(std::shared_ptr<FrameWorker> worker = nullptr)
        : model(withPublisher(platform, std::move(worker)))
    {
    }
    static PlatformServices withPublisher(const FakePlatform& platform, std::shared_ptr<FrameWorker> worker)
    {
        PlatformServices s = platform.services();
        s.makeFramePublisher = [sink = platform.frameSink, scheduler = platform.scheduler, worker] {
            return std::make_unique<FramePublisher>(sink, scheduler, worker);
        };
        return s;
    }
    FramePublisher& publisher() { return *model.framePublisher(); }
    FakeFrameSink& sink() { return *platform.frameSink; }
    std::size_t frames() { return sink().frameCount(); }

    FakePlatform platform;
    AppModel model;
};

}

class FramePublisherTest : public QObject {
    Q_OBJECT

private slots:
    void startPublishesAtOnceUnderTheSourceName()
    {
        PublishingModel p;
        p.model.aspect.set(AspectMode::r16x9);
        p.model.incomingSlideImage.set(solid(QColor(200, 30, 40)));
        p.model.start();
        QCOMPARE(p.sink().name, QStringLiteral("PDF Brelvonic"));
        QCOMPARE(p.frames(), std::size_t(1));
        const QImage frame = p.sink().lastFrame();
        QCOMPARE(frame.size(), QSize(1920, 1080));
        QVERIFY(TestPdf::near(frame.pixel(960, 540), QColor(200, 30, 40)));
        QVERIFY(p.model.isSyphonPublishing());
        QCOMPARE(p.model.syphonFrameSize(), QSizeF(1920, 1080));
        QVERIFY(!p.publisher().isLive());
    }

    void disabledAtStartStartsNothing()
    {
        PublishingModel p;
        p.platform.preferences->values[QStringLiteral("isSyphonEnabled")] = false;
        p.model.start();
        QCOMPARE(p.sink().starts, 0);
        QCOMPARE(p.frames(), std::size_t(0));
        QVERIFY(!p.model.isSyphonPublishing());
    }

    void switchingOffAndOn()
    {
        PublishingModel p;
        p.model.start();
        QVERIFY(p.publisher().heldFrameBytes() > 0);
        p.platform.preferences->writes.clear();

        p.model.setSyphonEnabled(true);  // unchanged: nothing at all
        QVERIFY(p.platform.preferences->writes.empty());
        QCOMPARE(p.sink().starts, 1);

        p.model.setSyphonEnabled(false);
        QCOMPARE(p.platform.preferences->values.value(QStringLiteral("isSyphonEnabled")).toBool(), false);
        QVERIFY(!p.sink().running);
        QCOMPARE(p.sink().stops, 1);
        QVERIFY(!p.model.isSyphonPublishing());
        QCOMPARE(p.publisher().heldFrameBytes(), qsizetype(0));
        QVERIFY(p.publisher().lastSignature().isEmpty());
        // Stopped: changes publish nothing.
        const std::size_t before = p.frames();
        p.model.isBlackout.set(true);
        p.platform.scheduler->runPending();
        QCOMPARE(p.frames(), before);

        p.model.setSyphonEnabled(true);
        QCOMPARE(p.platform.preferences->values.value(QStringLiteral("isSyphonEnabled")).toBool(), true);
        QCOMPARE(p.sink().starts, 2);
        QCOMPARE(p.frames(), before + 1);
        QVERIFY(p.model.isSyphonPublishing());
        // Tracking is armed again by the new start.
        p.model.isBlackout.set(false);
        p.platform.scheduler->runPending();
        QCOMPARE(p.frames(), before + 2);
    }

    // No media service at start: waiting, then live by itself when it comes.
    void waitsForTheService()
    {
        PublishingModel p;
        p.sink().serviceUp = false;
        p.model.incomingSlideImage.set(solid(Qt::blue, QSize(160, 120)));  // 4:3: bars left and right
        p.model.start();
        QVERIFY(!p.model.isSyphonPublishing());
        const std::size_t before = p.frames();
        p.sink().setRunning(true);
        QVERIFY(p.model.isSyphonPublishing());
        QCOMPARE(p.frames(), before + 1);  // the current picture, forced
        QVERIFY(TestPdf::near(p.sink().lastFrame().pixel(10, 540), Qt::black));
        QVERIFY(TestPdf::near(p.sink().lastFrame().pixel(960, 540), Qt::blue));
        p.sink().setRunning(false);
        QVERIFY(!p.model.isSyphonPublishing());
    }

    void signatureParts()
    {
        PublishingModel p;
        AppModel& m = p.model;
        m.laserPoint.set(QPointF(0.12345, 0.5));
        m.markColor.set(MarkColor{0.5, 0.25, 1});
        QCOMPARE(FramePublisher::frameSignature(m, {1920, 1080}),
                 QStringLiteral("|0|false|false|pointer|0.123,0.500|-|2.20|1.000|contain|1920x1080|0|0|false|false|"
                                "0.50,0.25,1.00"));

        // Which of the sixteen parts each change reaches.
        struct Case {
            const char* what;
            std::function<void(AppModel&)> change;
            int part;  // -1: the signature stays
        };
        const std::vector<Case> cases{
            {"blackout", [](AppModel& m) { m.isBlackout.set(true); }, 2},
            {"freeze", [](AppModel& m) { m.isFrozen.set(true); }, 3},
            {"tool", [](AppModel& m) { m.stageTool.set(StageTool::zoom); }, 4},
            {"laser below a thousandth", [](AppModel& m) { m.laserPoint.set(QPointF(0.1232, 0.5)); }, -1},
            {"laser", [](AppModel& m) { m.laserPoint.set(QPointF(0.2, 0.5)); }, 5},
            {"zoom centre", [](AppModel& m) { m.zoomCenter.set(QPointF(0.25, 0.75)); }, 6},
            {"zoom scale", [](AppModel& m) { m.zoomScale.set(3.0); }, 7},
            {"fade", [](AppModel& m) { m.transitionProgress.set(0.25); }, 8},
            {"fit", [](AppModel& m) { m.contentFit.set(ContentFit::cover); }, 9},
            {"custom width, other aspect", [](AppModel& m) { m.customWidth.set(1000); }, -1},
            {"draft stroke", [](AppModel& m) { m.draftStroke.set(Stroke{}); }, 13},
            {"draft frame", [](AppModel& m) { m.draftFrameRect.set(QRectF(0, 0, 0.1, 0.1)); }, 14},
            {"colour", [](AppModel& m) { m.markColor.set(MarkColor{0, 0, 0}); }, 15},
            {"strokes on the page", [](AppModel& m) {
                 m.strokesByPage.mutate([&](auto& byPage) { byPage[m.pageKey()].push_back(Stroke{}); });
             }, 11},
            {"frames on the page", [](AppModel& m) {
                 m.framesByPage.mutate([&](auto& byPage) { byPage[m.pageKey()].push_back(FrameRect{}); });
             }, 12},
        };
        for (const Case& c : cases) {
            const QStringList before = FramePublisher::frameSignature(m, {1920, 1080}).split(u'|');
            c.change(m);
            const QStringList after = FramePublisher::frameSignature(m, {1920, 1080}).split(u'|');
            QCOMPARE(after.size(), 16);
            QStringList changed;
            for (int i = 0; i < 16; ++i)
                if (before[i] != after[i])
                    changed << QString::number(i);
            QCOMPARE(changed, c.part < 0 ? QStringList() : QStringList{QString::number(c.part)});
        }
        QCOMPARE(FramePublisher::frameSignature(m, {1080, 1920}).split(u'|')[10], QStringLiteral("1080x1920"));
    }

    // What reaches the sink after one change, once the main thread runs.
    void changesPublishOnlyWhenTheFrameDiffers()
    {
        PublishingModel p;
        p.model.aspect.set(AspectMode::r16x9);
        p.model.start();
        auto& scheduler = *p.platform.scheduler;
        struct Case {
            const char* what;
            std::function<void(AppModel&)> change;
            std::optional<QSize> frame;  // none: no frame
        };
        const std::vector<Case> cases{
            {"blackout", [](AppModel& m) { m.isBlackout.set(true); }, QSize(1920, 1080)},
            {"custom width, other aspect", [](AppModel& m) { m.customWidth.set(1000); }, std::nullopt},
            {"notified but equal", [](AppModel& m) { m.isBlackout.mutate([](bool&) {}); }, std::nullopt},
            {"untracked (the show timer)", [](AppModel& m) { m.plannedDuration.set(600); }, std::nullopt},
            {"portrait", [](AppModel& m) { m.aspect.set(AspectMode::r9x16); }, QSize(1080, 1920)},
            {"custom", [](AppModel& m) { m.aspect.set(AspectMode::custom); }, QSize(1000, 1080)},
            {"custom height", [](AppModel& m) { m.customHeight.set(3001); }, QSize(852, 2560)},
        };
        for (const Case& c : cases) {
            const std::size_t before = p.frames();
            c.change(p.model);
            QCOMPARE(p.frames(), before);  // never inside the change itself
            scheduler.runPending();
            QCOMPARE(p.frames(), before + (c.frame ? 1 : 0));
            if (c.frame) {
                QCOMPARE(p.sink().lastFrame().size(), *c.frame);
                QCOMPARE(p.model.syphonFrameSize(), QSizeF(*c.frame));
            }
        }
        // Several changes in one turn: one frame.
        const std::size_t before = p.frames();
        p.model.isBlackout.set(false);
        p.model.contentFit.set(ContentFit::cover);
        scheduler.runPending();
        QCOMPARE(p.frames(), before + 1);
    }

    void liveTimerRunsExactlyWhileSomethingMoves()
    {
        PublishingModel p;
        p.model.start();
        auto& scheduler = *p.platform.scheduler;
        struct Case {
            const char* what;
            std::function<void(AppModel&)> on;
            std::function<void(AppModel&)> off;
        };
        const std::vector<Case> cases{
            {"laser", [](AppModel& m) { m.stageTool.set(StageTool::laser); },
             [](AppModel& m) { m.stageTool.set(StageTool::pointer); }},
            {"fade", [](AppModel& m) { m.transitionProgress.set(0.2); },
             [](AppModel& m) { m.transitionProgress.set(1.0); }},
            {"draft stroke", [](AppModel& m) { m.draftStroke.set(Stroke{}); },
             [](AppModel& m) { m.draftStroke.set(std::nullopt); }},
            {"zoom", [](AppModel& m) { m.stageTool.set(StageTool::zoom); m.zoomCenter.set(QPointF(0.5, 0.5)); },
             [](AppModel& m) { m.zoomCenter.set(std::nullopt); }},
        };
        for (const Case& c : cases) {
            QVERIFY2(!p.publisher().isLive(), c.what);
            c.on(p.model);
            scheduler.runPending();
            QVERIFY2(p.publisher().isLive(), c.what);
            // Identical frames at 30 a second, from the timer alone.
            const std::size_t before = p.frames();
            scheduler.advance(1.0);
            QVERIFY2(qAbs(int(p.frames() - before) - 30) <= 1, c.what);
            c.off(p.model);
            scheduler.runPending();
            QVERIFY2(!p.publisher().isLive(), c.what);
            const std::size_t still = p.frames();
            scheduler.advance(1.0);
            QCOMPARE(p.frames(), still);
        }
        // The laser held still: the same picture is handed over again, not
        // drawn anew; moved, it is drawn.
        p.model.setTool(StageTool::laser);
        p.model.laserPoint.set(QPointF(0.5, 0.5));
        scheduler.runPending();
        scheduler.advance(0.2);
        auto keys = p.sink().frameKeys();
        QCOMPARE(keys.back(), keys[keys.size() - 4]);
        p.model.laserPoint.set(QPointF(0.6, 0.5));
        scheduler.advance(0.1);
        keys = p.sink().frameKeys();
        QVERIFY(keys.back() != keys[keys.size() - 5]);
        p.model.setTool(StageTool::pointer);
        scheduler.runPending();

        // Disabling stops a running timer too.
        p.model.setTool(StageTool::laser);
        scheduler.runPending();
        QVERIFY(p.publisher().isLive());
        p.model.setSyphonEnabled(false);
        QVERIFY(!p.publisher().isLive());
        const std::size_t stopped = p.frames();
        scheduler.advance(1.0);
        QCOMPARE(p.frames(), stopped);
    }

    // The window draws the same state at the same size: it takes the
    // publisher's picture; at another size it draws its own.
    void sharedWithTheWindow()
    {
        PublishingModel p;
        p.model.aspect.set(AspectMode::r16x9);
        p.model.incomingSlideImage.set(solid(Qt::green));
        p.model.isOutputVisible.set(true);
        SharedOutputFrame& shared = p.publisher().sharedFrame();
        shared.noteWindowPixels(QSize(1920, 1080));
        p.model.start();
        const OutputFrameState state = p.model.outputFrameState();
        const QImage offered = shared.take(state, QSize(1920, 1080));
        QVERIFY(!offered.isNull());
        QCOMPARE(offered, p.sink().lastFrame());
        QVERIFY(shared.take(state, QSize(1280, 720)).isNull());
        OutputFrameState other = state;
        other.isBlackout = true;
        QVERIFY(shared.take(other, QSize(1920, 1080)).isNull());

        // A window of another size: nothing is offered for the new state.
        shared.noteWindowPixels(QSize(1280, 720));
        p.model.isBlackout.set(true);
        p.platform.scheduler->runPending();
        QVERIFY(shared.take(p.model.outputFrameState(), QSize(1920, 1080)).isNull());
        QVERIFY(TestPdf::near(p.sink().lastFrame().pixel(960, 540), Qt::black));
    }

    void workerCompositesOffTheMainThread()
    {
        auto worker = std::make_shared<FrameWorker>();
        PublishingModel p(worker);
        p.model.aspect.set(AspectMode::r4x3);
        p.model.incomingSlideImage.set(solid(QColor(250, 200, 0), QSize(160, 120)));
        p.model.start();
        QTRY_COMPARE_WITH_TIMEOUT(p.frames(), std::size_t(1), 20000);
        QCOMPARE(p.sink().lastFrame().size(), QSize(1600, 1200));
        QVERIFY(TestPdf::near(p.sink().lastFrame().pixel(800, 600), QColor(250, 200, 0)));
        p.model.isBlackout.set(true);
        p.platform.scheduler->runPending();
        worker->waitIdle();
        QCOMPARE(p.frames(), std::size_t(2));
        QVERIFY(TestPdf::near(p.sink().lastFrame().pixel(800, 600), Qt::black));
    }

    // Only the newest waiting job runs; the caller never waits.
    void workerKeepsOnlyTheNewestJob()
    {
        FrameWorker worker;
        std::binary_semaphore gate(0);
        std::atomic<bool> blocking{false};
        std::vector<int> order;
        std::mutex mutex;
        auto job = [&](int n) {
            return [&, n] {
                if (n == 0) {
                    blocking = true;
                    gate.acquire();
                }
                std::lock_guard lock(mutex);
                order.push_back(n);
            };
        };
        worker.submit(job(0));
        QTRY_VERIFY_WITH_TIMEOUT(blocking.load(), 20000);
        for (int n = 1; n <= 3; ++n)
            worker.submit(job(n));  // returns at once although the thread is busy
        QCOMPARE(worker.skipped(), 2);
        gate.release();
        worker.waitIdle();
        QCOMPARE(order, (std::vector<int>{0, 3}));
    }

    void yuvOfKnownColours()
    {
        struct Case {
            QColor left, right;
            std::array<int, 4> yuyv;
        };
        const Case cases[] = {
            {Qt::white, Qt::white, {235, 128, 235, 128}},
            {Qt::black, Qt::black, {16, 128, 16, 128}},
            {Qt::red, Qt::red, {82, 90, 82, 240}},
            {Qt::green, Qt::green, {145, 54, 145, 34}},
            {Qt::blue, Qt::blue, {41, 240, 41, 110}},
            {Qt::white, Qt::black, {235, 128, 16, 128}},
        };
        for (const Case& c : cases) {
            QImage image(4, 2, QImage::Format_ARGB32_Premultiplied);
            image.fill(QColor(128, 128, 128));
            image.setPixelColor(0, 1, c.left);
            image.setPixelColor(1, 1, c.right);
            std::array<uint8_t, 16> out{};
            PixelConversion::bgraToYuy2(image.constBits(), int(image.bytesPerLine()), out.data(), 8, 4, 2);
            for (int i = 0; i < 4; ++i)
                QVERIFY2(qAbs(out[8 + i] - c.yuyv[i]) <= 1, qPrintable(c.left.name() + c.right.name()));
            QCOMPARE(out[0], out[2]);  // grey stays grey
            QCOMPARE(int(out[1]), 128);
        }
    }
};

QTEST_MAIN(FramePublisherTest)
#include "tst_FramePublisher.moc"
