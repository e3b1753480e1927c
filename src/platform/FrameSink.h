#pragma once

#include <QImage>
#include <QString>

#include <functional>

// Publishes frames as a live video source for other programs on this machine.
class FrameSink {
public:
    virtual ~FrameSink() = default;
    // Begins offering the source under `name`. True when the sink took the
    // request; it may still be waiting for the media service (`isRunning`
    // false) and then connects by itself once the service appears.
    virtual bool start(const QString& name) = 0;
    // `frame` is QImage::Format_ARGB32_Premultiplied (B, G, R, A bytes).
    // Callable from any thread; never waits for a consumer. The sink keeps a
    // reference only until it has copied the pixels.
    virtual void publish(const QImage& frame) = 0;
    virtual void stop() = 0;
    // The source exists for consumers now.
    virtual bool isRunning() const = 0;
    // Told on the main thread whenever `isRunning` changes.
    virtual void setRunningHandler(std::function<void()> handler) = 0;
};
