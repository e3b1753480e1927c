#pragma once

#include "model/Observation.h"
#include "model/OutputTypes.h"
#include "output/SharedOutputFrame.h"
#include "platform/Scheduler.h"

#include <QImage>
#include <QString>

#include <memory>

class AppModel;
class FrameSink;
class FrameWorker;

// Publishes the audience's picture as a live video source: a frame on every
// visible change, and 30 frames a second while something moves. Owned by the
// model; everything here runs on the main thread except the compositing it
// hands to the worker.
class FramePublisher {
public:
    // Without a worker the published frame is composited on the caller's
    // thread (tests).
    FramePublisher(std::shared_ptr<FrameSink> sink, std::shared_ptr<Scheduler> scheduler,
                   std::shared_ptr<FrameWorker> worker = nullptr);
    ~FramePublisher();
    FramePublisher(const FramePublisher&) = delete;
    FramePublisher& operator=(const FramePublisher&) = delete;

    static constexpr double liveInterval = 1.0 / 30.0;

    // Starts or resumes publishing `model`.
    void start(AppModel& model);
    // Stops publishing and frees the frame buffers.
    void stop();
    // Composites and hands over one frame if its signature changed, or always
    // when `force` is set.
    void publish(bool force);

    // The sixteen-part description of what a frame of `size` would show.
    static QString frameSignature(const AppModel& model, PixelSize size);

    bool isStarted() const { return started_; }
    bool isLive() const { return liveTask_ != nullptr; }
    const QString& lastSignature() const { return lastSignature_; }
    // Bytes held by the frame buffers (0 after `stop`).
    qsizetype heldFrameBytes() const;
    // The picture offered to the output window.
    SharedOutputFrame& sharedFrame() { return shared_; }

private:
    void observe();
    void syncLiveTimer();
    void scheduleTick(Task task, double due);
    void render(PixelSize size);
    void sinkStateChanged();

    std::shared_ptr<FrameSink> sink_;
    std::shared_ptr<Scheduler> scheduler_;
    std::shared_ptr<FrameWorker> worker_;
    // Handed to scheduled work so it can tell whether the publisher still exists.
    std::shared_ptr<FramePublisher*> self_;

    AppModel* model_ = nullptr;
    bool started_ = false;
    QString lastSignature_;
    obs::TrackerPtr tracker_;
    Task liveTask_;

    // A picture and the state it shows, so that a forced frame of an
    // unchanged state (the laser held still) is handed over again without
    // compositing.
    struct Composited {
        QImage image;
        OutputFrameState state;
        bool drawn = false;
    };
    // Frames composited here, for the window too: two, used in turn, so the
    // one being drawn is never the one the window may still be showing.
    Composited mainFrames_[2];
    int lastMain_ = 0;
    // The worker's frame; only the worker touches it.
    std::shared_ptr<Composited> workerFrame_;
    SharedOutputFrame shared_;
};
