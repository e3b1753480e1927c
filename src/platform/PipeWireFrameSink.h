#pragma once

#include "platform/FrameSink.h"

#include <QObject>

#include <atomic>
#include <memory>
#include <mutex>

// The video source as a media-service (PipeWire) node that camera-style
// consumers list: shared-memory BGRA, BGRx or YUY2 frames of one fixed size at
// 30/1, filled on the service's own thread. Waits for the service when there
// is none and comes back by itself when it restarts.
class PipeWireFrameSink final : public QObject, public FrameSink {
    Q_OBJECT
public:
    explicit PipeWireFrameSink(QObject* parent = nullptr);
    ~PipeWireFrameSink() override;

    bool start(const QString& name) override;
    void publish(const QImage& frame) override;
    void stop() override;
    bool isRunning() const override { return running_; }
    void setRunningHandler(std::function<void()> handler) override { handler_ = std::move(handler); }

    // Frames written into the service's buffers so far, resent ones included.
    quint64 framesSent() const;

    // The node's stable name: lower case, words joined by hyphens.
    static QString nodeName(const QString& name);

private:
    struct Loop;
    void setRunning(bool running);

    // Frames arrive from the compositing worker while the main thread may
    // start or stop the loop: both hold this for the moment they touch it.
    mutable std::mutex loopGuard_;
    std::unique_ptr<Loop> loop_;
    std::function<void()> handler_;
    std::atomic<bool> running_{false};
};
