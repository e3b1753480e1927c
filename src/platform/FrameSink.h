#pragma once

#include <QImage>
#include <QString>

// Publishes frames as a live video source for other programs on this machine.
class FrameSink {
public:
    virtual ~FrameSink() = default;
    virtual bool start(const QString& name) = 0;
    // `frame` is QImage::Format_ARGB32_Premultiplied (B, G, R, A bytes).
    virtual void publish(const QImage& frame) = 0;
    virtual void stop() = 0;
    virtual bool isRunning() const = 0;
};
