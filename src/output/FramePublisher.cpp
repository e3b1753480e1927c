#include "FramePublisher.h"

#include "model/AppModel.h"
#include "output/FrameWorker.h"
#include "output/OutputCompositor.h"
#include "platform/FrameSink.h"

#include <QPainter>

namespace {

const QString sourceName = QStringLiteral("PDF Brelvonic");

QString yesNo(bool b) { return b ? QStringLiteral("true") : QStringLiteral("false"); }

QString pointText(const std::optional<QPointF>& p)
{
    return p ? QString::asprintf("%.3f,%.3f", p->x(), p->y()) : QStringLiteral("-");
}

template <typename ByPage>
std::size_t countOn(const ByPage& byPage, const QString& key)
{
    const auto it = byPage.find(key);
    return it == byPage.end() ? 0 : it->second.size();
}

}

// Draws `state` over the whole of the frame's image (remade only when the size
// changes); nothing to do when it already shows that state at that size.
static bool composite(const OutputFrameState& state, QSize size, auto& frame)
{
    if (frame.drawn && frame.image.size() == size && frame.state == state)
        return false;
    if (frame.image.size() != size || frame.image.format() != QImage::Format_ARGB32_Premultiplied)
        frame.image = QImage(size, QImage::Format_ARGB32_Premultiplied);
    {
        QPainter painter(&frame.image);
        OutputCompositor::draw(state, painter, QSizeF(size));
    }
    frame.state = state;
    frame.drawn = true;
    return true;
}

// ---- The model's switch ----

void AppModel::setSyphonEnabled(bool enabled)
{
    if (enabled == isSyphonEnabled.peek())
        return;
    isSyphonEnabled.set(enabled);
    persistPreferences();
    if (!syphonOutput_)
        return;
    if (enabled)
        syphonOutput_->start(*this);
    else
        syphonOutput_->stop();
}

// ---- Publisher ----

FramePublisher::FramePublisher(std::shared_ptr<FrameSink> sink, std::shared_ptr<Scheduler> scheduler,
                               std::shared_ptr<FrameWorker> worker)
    : sink_(std::move(sink))
    , scheduler_(std::move(scheduler))
    , worker_(std::move(worker))
    , self_(std::make_shared<FramePublisher*>(this))
    , workerFrame_(std::make_shared<Composited>())
{
    std::weak_ptr<FramePublisher*> weak = self_;
    sink_->setRunningHandler([weak] {
        if (auto alive = weak.lock(); alive && *alive)
            (*alive)->sinkStateChanged();
    });
}

FramePublisher::~FramePublisher()
{
    *self_ = nullptr;
    sink_->setRunningHandler(nullptr);
    if (started_)
        sink_->stop();
    if (liveTask_)
        liveTask_->cancel();
    // A frame still being composited finishes before its sink goes away.
    if (worker_)
        worker_->waitIdle();
}

void FramePublisher::start(AppModel& model)
{
    model_ = &model;
    if (!started_)
        started_ = sink_->start(sourceName);
    observe();
    publish(true);
    syncLiveTimer();
    model.isSyphonPublishing.set(started_ && sink_->isRunning());
}

void FramePublisher::stop()
{
    if (liveTask_)
        liveTask_->cancel();
    liveTask_.reset();
    tracker_.reset();
    if (started_)
        sink_->stop();
    started_ = false;
    lastSignature_.clear();
    mainFrames_[0] = {};
    mainFrames_[1] = {};
    // A job still on the worker holds the old frame until it ends.
    workerFrame_ = std::make_shared<Composited>();
    shared_.clear();
    if (model_)
        model_->isSyphonPublishing.set(false);
}

void FramePublisher::observe()
{
    if (!model_)
        return;
    AppModel& m = *model_;
    tracker_ = obs::withTracking(
        [&m] {
            m.outputPageIndex();
            m.isBlackout();
            m.isFrozen();
            m.stageTool();
            m.laserPoint();
            m.markColor();
            m.zoomCenter();
            m.zoomScale();
            m.contentFit();
            m.aspect();
            m.customWidth();
            m.customHeight();
            m.selectedDisplayID();
            m.documentURL();
            m.isSyphonEnabled();
            m.transitionProgress();
            m.incomingSlideImage();
            m.outgoingSlideImage();
            m.draftStroke();
            m.draftFrameRect();
            m.playlistIndex();
            m.pageIndex();
        },
        [weak = std::weak_ptr<FramePublisher*>(self_), scheduler = scheduler_] {
            scheduler->post([weak] {
                auto alive = weak.lock();
                if (!alive || !*alive)
                    return;
                FramePublisher& self = **alive;
                if (self.model_ && self.started_ && self.model_->isSyphonEnabled.peek()) {
                    self.publish(false);
                    self.observe();
                } else {
                    self.tracker_.reset();
                }
            });
        });
}

QString FramePublisher::frameSignature(const AppModel& m, PixelSize size)
{
    const QString key = m.pageKey();
    const MarkColor colour = m.markColor();
    const QStringList parts{
        m.documentURL().value_or(QString()),
        QString::number(m.outputPageIndex()),
        yesNo(m.isBlackout()),
        yesNo(m.isFrozen()),
        stageTools.rawValue(m.stageTool()),
        pointText(m.laserPoint()),
        pointText(m.zoomCenter()),
        QString::asprintf("%.2f", m.zoomScale()),
        QString::asprintf("%.3f", m.transitionProgress()),
        contentFits.rawValue(m.contentFit()),
        QStringLiteral("%1x%2").arg(size.width).arg(size.height),
        QString::number(countOn(m.strokesByPage(), key)),
        QString::number(countOn(m.framesByPage(), key)),
        yesNo(m.draftStroke().has_value()),
        yesNo(m.draftFrameRect().has_value()),
        QString::asprintf("%.2f,%.2f,%.2f", colour.red, colour.green, colour.blue),
    };
    return parts.join(u'|');
}

void FramePublisher::publish(bool force)
{
    if (!model_ || !started_)
        return;
    AppModel& m = *model_;
    const PixelSize size = m.syphonPixelSize();
    const QString signature = frameSignature(m, size);
    if (!force && signature == lastSignature_)
        return;
    lastSignature_ = signature;
    render(size);
    m.syphonFrameSize.set(QSizeF(size.width, size.height));
    m.isSyphonPublishing.set(sink_->isRunning());
    syncLiveTimer();
}

void FramePublisher::render(PixelSize size)
{
    const QSize pixels(std::max(size.width, 2), std::max(size.height, 2));
    OutputFrameState state = model_->outputFrameState();
    // The window shows this very picture: composite it once, here, for both.
    if (model_->isOutputVisible.peek() && shared_.windowPixels() == pixels) {
        Composited& last = mainFrames_[lastMain_];
        if (!(last.drawn && last.image.size() == pixels && last.state == state)) {
            lastMain_ = 1 - lastMain_;
            composite(state, pixels, mainFrames_[lastMain_]);
        }
        const Composited& frame = mainFrames_[lastMain_];
        shared_.offer(frame.state, frame.image);
        sink_->publish(frame.image);
        return;
    }
    // Otherwise the main thread only hands a copy of the state over.
    auto job = [state = std::move(state), pixels, frame = workerFrame_, sink = sink_] {
        composite(state, pixels, *frame);
        sink->publish(frame->image);
    };
    if (worker_)
        worker_->submit(std::move(job));
    else
        job();
}

void FramePublisher::syncLiveTimer()
{
    const bool wanted = model_ && started_ && model_->isSyphonEnabled.peek() && model_->needsLiveOutput();
    if (wanted && !liveTask_) {
        liveTask_ = std::make_shared<TaskHandle>();
        scheduleTick(liveTask_, scheduler_->now() + liveInterval);
    } else if (!wanted && liveTask_) {
        liveTask_->cancel();
        liveTask_.reset();
    }
}

void FramePublisher::scheduleTick(Task task, double due)
{
    std::weak_ptr<FramePublisher*> weak = self_;
    scheduler_->after(due - scheduler_->now(), [weak, task, due] {
        auto alive = weak.lock();
        if (task->isCancelled() || !alive || !*alive)
            return;
        FramePublisher& self = **alive;
        // Ticks keep to a 1/30 s grid, so a late tick does not slow the rate.
        const double next = std::max(due + liveInterval, self.scheduler_->now());
        self.scheduleTick(task, next);
        self.publish(true);
    });
}

void FramePublisher::sinkStateChanged()
{
    if (!model_ || !started_)
        return;
    const bool running = sink_->isRunning();
    model_->isSyphonPublishing.set(running);
    // A node made anew (service started late or restarted) shows the current
    // picture at once.
    if (running)
        publish(true);
}

qsizetype FramePublisher::heldFrameBytes() const
{
    return mainFrames_[0].image.sizeInBytes() + mainFrames_[1].image.sizeInBytes() + workerFrame_->image.sizeInBytes();
}
