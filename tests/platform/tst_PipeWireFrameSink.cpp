// The video source against a real, private PipeWire with its session manager,
// read by a GStreamer consumer the way mixers and browsers read it.
#include <gst/app/gstappsink.h>
#include <gst/gst.h>

#include "model/AppModel.h"
#include "output/FramePublisher.h"
#include "output/FrameWorker.h"
#include "platform/PipeWireFrameSink.h"
#include "platform/QtScheduler.h"
#include "support/FakePlatform.h"
#include "support/PipeWireSession.h"
#include "support/TestPdf.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

namespace {

double seconds()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// `pipewiresrc target-object=pdf-brelvonic ! BGRA ! appsink`, recording each
// frame's arrival, size and the colour at one point (fractions of the frame).
class Consumer {
public:
    struct Frame {
        double at;
        QSize size;
        QRgb probe;
    };

    explicit Consumer(QPointF probe = {0.03, 0.03}) : probe_(probe)
    {
        pipeline_ = gst_parse_launch("pipewiresrc target-object=pdf-brelvonic ! video/x-raw,format=BGRA ! "
                                     "appsink name=sink sync=false max-buffers=8",
                                     nullptr);
        GstElement* sink = gst_bin_get_by_name(GST_BIN(pipeline_), "sink");
        sink_ = GST_APP_SINK(sink);
        gst_element_set_state(pipeline_, GST_STATE_PLAYING);
        thread_ = std::thread([this] { pull(); });
    }
    ~Consumer()
    {
        quit_ = true;
        thread_.join();
        gst_element_set_state(pipeline_, GST_STATE_NULL);
        gst_object_unref(sink_);
        gst_object_unref(pipeline_);
    }
    std::vector<Frame> frames() const
    {
        std::lock_guard lock(mutex_);
        return frames_;
    }
    std::size_t count() const
    {
        std::lock_guard lock(mutex_);
        return frames_.size();
    }
    std::optional<Frame> last() const
    {
        std::lock_guard lock(mutex_);
        if (frames_.empty())
            return std::nullopt;
        return frames_.back();
    }

private:
    void pull()
    {
        while (!quit_) {
            GstSample* sample = gst_app_sink_try_pull_sample(sink_, 50 * GST_MSECOND);
            if (!sample)
                continue;
            const double at = seconds();
            const GstStructure* caps = gst_caps_get_structure(gst_sample_get_caps(sample), 0);
            int w = 0, h = 0;
            gst_structure_get_int(caps, "width", &w);
            gst_structure_get_int(caps, "height", &h);
            QRgb probe = 0;
            GstMapInfo map;
            GstBuffer* buffer = gst_sample_get_buffer(sample);
            if (w > 0 && h > 0 && gst_buffer_map(buffer, &map, GST_MAP_READ)) {
                const gsize stride = map.size / gsize(h);
                const int x = int(probe_.x() * w), y = int(probe_.y() * h);
                if (stride >= gsize(4 * w)) {
                    const guint8* p = map.data + gsize(y) * stride + gsize(x) * 4;
                    probe = qRgb(p[2], p[1], p[0]);
                }
                gst_buffer_unmap(buffer, &map);
            }
            gst_sample_unref(sample);
            std::lock_guard lock(mutex_);
            frames_.push_back({at, QSize(w, h), probe});
        }
    }

    QPointF probe_;
    GstElement* pipeline_ = nullptr;
    GstAppSink* sink_ = nullptr;
    std::atomic<bool> quit_{false};
    mutable std::mutex mutex_;
    std::vector<Frame> frames_;
    std::thread thread_;
};

// The node named pdf-brelvonic in `pw-dump`, or an empty object.
QJsonObject findNode(const PipeWireSession& session)
{
    const QJsonArray objects = QJsonDocument::fromJson(session.run(QStringLiteral("pw-dump"), {})).array();
    for (const QJsonValue& v : objects) {
        const QJsonObject info = v.toObject().value(QStringLiteral("info")).toObject();
        if (info.value(QStringLiteral("props")).toObject().value(QStringLiteral("node.name")).toString()
            == QStringLiteral("pdf-brelvonic"))
            return info;
    }
    return {};
}

QColor pageColour(int index) { return QColor::fromRgb(TestPdf::pageRgb(index)); }

}

class PipeWireFrameSinkTest : public QObject {
    Q_OBJECT

    PipeWireSession session;
    TestFolder folder;
    FakePlatform platform;
    std::shared_ptr<PipeWireFrameSink> sink = std::make_shared<PipeWireFrameSink>();
    std::unique_ptr<AppModel> model;

private slots:
    void initTestCase()
    {
        session.useInThisProcess();
        gst_init(nullptr, nullptr);
        PlatformServices s = platform.services();
        s.scheduler = std::make_shared<QtScheduler>();
        s.frameSink = sink;
        s.makeFramePublisher = [sink = sink, scheduler = s.scheduler] {
            return std::make_unique<FramePublisher>(sink, scheduler, std::make_shared<FrameWorker>());
        };
        model = std::make_unique<AppModel>(s);
        model->transitionDuration.set(1.0);
        model->replacePlaylist({folder.pdf("colours.pdf", 3)});
        // The slide is rendered on the engine's workers.
        QTRY_COMPARE_WITH_TIMEOUT(TestPdf::pageShown(model->incomingSlideImage()), 0, 30000);
    }

    // Started before the service: waiting, working, then live by itself.
    void waitsForTheService()
    {
        model->start();
        QVERIFY(!model->isSyphonPublishing());
        QCOMPARE(model->syphonFrameSize(), QSizeF(1920, 1080));
        model->goToNextSlide();
        model->goToPreviousSlide();
        QCOMPARE(model->pageIndex(), 0);
        QTRY_VERIFY_WITH_TIMEOUT(model->transitionProgress() >= 1.0, 30000);
        QVERIFY(session.start());
        QTRY_VERIFY_WITH_TIMEOUT(model->isSyphonPublishing(), 30000);
    }

    void nodeAsCameraConsumersExpectIt()
    {
        QJsonObject node;
        QTRY_VERIFY_WITH_TIMEOUT(!(node = findNode(session)).isEmpty()
                                     && !node.value(QStringLiteral("params")).toObject().value(QStringLiteral("EnumFormat")).toArray().isEmpty(),
                                 30000);
        const QJsonObject props = node.value(QStringLiteral("props")).toObject();
        const std::pair<const char*, const char*> wanted[] = {
            {"node.description", "PDF Brelvonic"}, {"media.name", "PDF Brelvonic"}, {"media.class", "Video/Source"},
            {"media.role", "Camera"}, {"media.type", "Video"}, {"media.category", "Capture"},
            {"app.name", "PDF Brelvonic"}, {"application.name", "PDF Brelvonic"},
        };
        for (const auto& [key, value] : wanted)
            QCOMPARE(props.value(QLatin1String(key)).toString(), QString::fromUtf8(value));
        // One fixed size and rate per format, in order of preference.
        QStringList formats;
        for (const QJsonValue& v : node.value(QStringLiteral("params")).toObject().value(QStringLiteral("EnumFormat")).toArray()) {
            const QJsonObject f = v.toObject();
            formats << f.value(QStringLiteral("format")).toString();
            const QJsonObject size = f.value(QStringLiteral("size")).toObject();
            QCOMPARE(size.value(QStringLiteral("width")).toInt(), 1920);
            QCOMPARE(size.value(QStringLiteral("height")).toInt(), 1080);
            const QJsonObject rate = f.value(QStringLiteral("framerate")).toObject();
            QCOMPARE(rate.value(QStringLiteral("num")).toInt(), 30);
            QCOMPARE(rate.value(QStringLiteral("denom")).toInt(), 1);
        }
        QCOMPARE(formats, (QStringList{QStringLiteral("BGRA"), QStringLiteral("BGRx"), QStringLiteral("YUY2")}));
    }

    // Nothing moves: a consumer that joins gets the slide at once, then a
    // frame about once a second.
    void lateJoinerSeesTheSlide()
    {
        Consumer consumer;
        QTRY_VERIFY_WITH_TIMEOUT(consumer.count() >= 1, 30000);
        const Consumer::Frame first = *consumer.last();
        QCOMPARE(first.size, QSize(1920, 1080));
        QVERIFY2(TestPdf::near(first.probe, pageColour(0), 6), qPrintable(QColor(first.probe).name()));
        QTRY_VERIFY_WITH_TIMEOUT(consumer.count() >= 3, 30000);
        const auto frames = consumer.frames();
        for (std::size_t i = 1; i < frames.size(); ++i)
            QVERIFY(frames[i].at - frames[i - 1].at > 0.5);
    }

    // A new size is offered on the same node; consumers that join take it.
    // (GStreamer's source keeps the caps it started with, so a consumer of
    // its own is started after the switch.)
    void portraitRenegotiates()
    {
        auto offeredSize = [this] {
            const QJsonArray formats = findNode(session).value(QStringLiteral("params")).toObject().value(QStringLiteral("EnumFormat")).toArray();
            const QJsonObject size = formats.first().toObject().value(QStringLiteral("size")).toObject();
            return QSize(size.value(QStringLiteral("width")).toInt(), size.value(QStringLiteral("height")).toInt());
        };
        Consumer before;
        QTRY_VERIFY_WITH_TIMEOUT(before.count() >= 1, 30000);
        model->aspect.set(AspectMode::r9x16);
        QTRY_COMPARE_WITH_TIMEOUT(offeredSize(), QSize(1080, 1920), 30000);
        const std::size_t seen = before.count();
        QTRY_VERIFY_WITH_TIMEOUT(before.count() > seen, 30000);  // still served
        {
            Consumer after(QPointF(0.5, 0.02));  // above the 16:9 slide
            QTRY_VERIFY_WITH_TIMEOUT(after.count() >= 1, 30000);
            QCOMPARE(after.last()->size, QSize(1080, 1920));
            QVERIFY(TestPdf::near(after.last()->probe, Qt::black, 2));
        }
        {
            Consumer middle(QPointF(0.05, 0.5));
            QTRY_VERIFY_WITH_TIMEOUT(middle.count() >= 1, 30000);
            QVERIFY(TestPdf::near(middle.last()->probe, pageColour(0), 6));
        }
        model->aspect.set(AspectMode::r16x9);
        QTRY_COMPARE_WITH_TIMEOUT(offeredSize(), QSize(1920, 1080), 30000);
    }

    void fadeRunsAtThirtyAndStops()
    {
        Consumer consumer;
        QTRY_VERIFY_WITH_TIMEOUT(consumer.count() >= 1, 30000);
        const double start = seconds();
        model->goToNextSlide();
        QTRY_VERIFY_WITH_TIMEOUT(model->transitionProgress() >= 1.0, 30000);
        const double end = seconds();
        // After the fade: quiet until the keep-alive frame about a second on.
        QTRY_VERIFY_WITH_TIMEOUT(consumer.last()->at > end + 0.8, 30000);
        int during = 0, after = 0;
        for (const auto& f : consumer.frames()) {
            during += f.at > start && f.at <= end;
            after += f.at > end + 0.3 && f.at < end + 0.8;
        }
        const double rate = during / (end - start);
        QVERIFY2(rate > 15 && rate < 36, qPrintable(QString::number(rate)));
        QCOMPARE(after, 0);
        QVERIFY(TestPdf::near(consumer.last()->probe, pageColour(1), 6));
    }

    void switchingOffRemovesTheNode()
    {
        model->setSyphonEnabled(false);
        QVERIFY(!model->isSyphonPublishing());
        QTRY_VERIFY_WITH_TIMEOUT(findNode(session).isEmpty(), 30000);
        model->setSyphonEnabled(true);
        QTRY_VERIFY_WITH_TIMEOUT(model->isSyphonPublishing(), 30000);
        QTRY_VERIFY_WITH_TIMEOUT(!findNode(session).isEmpty(), 30000);
        Consumer consumer;
        QTRY_VERIFY_WITH_TIMEOUT(consumer.count() >= 1, 30000);
        QVERIFY(TestPdf::near(consumer.last()->probe, pageColour(1), 6));
    }

    void serviceRestartBringsTheNodeBack()
    {
        session.stopService();
        QTRY_VERIFY_WITH_TIMEOUT(!model->isSyphonPublishing(), 30000);
        model->goToNextSlide();  // the show goes on meanwhile
        QVERIFY(session.start());
        QTRY_VERIFY_WITH_TIMEOUT(model->isSyphonPublishing(), 30000);
        Consumer consumer;
        QTRY_VERIFY_WITH_TIMEOUT(consumer.count() >= 1 && TestPdf::near(consumer.last()->probe, pageColour(2), 6), 30000);
    }

    void cleanupTestCase()
    {
        model.reset();
        sink.reset();
    }
};

QTEST_MAIN(PipeWireFrameSinkTest)
#include "tst_PipeWireFrameSink.moc"
