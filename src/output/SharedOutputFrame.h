#pragma once

#include "model/OutputTypes.h"

#include <QImage>
#include <QSize>

class AppModel;
class QWidget;

// The frame the publisher composited on the main thread, kept for the output
// window: when the window draws the same state at the same pixel size it lays
// this picture on screen instead of compositing it a second time. Main thread
// only.
class SharedOutputFrame {
public:
    void offer(const OutputFrameState& state, const QImage& image);
    // The picture of `state` at `pixels`, or a null image when there is none.
    QImage take(const OutputFrameState& state, QSize pixels) const;
    // The window's drawing size in pixels; empty while it draws nothing.
    void noteWindowPixels(QSize pixels) { windowPixels_ = pixels; }
    QSize windowPixels() const { return windowPixels_; }
    void clear();

    // For the output window's paint: notes the window's size with the
    // model's publisher and, when it holds this very frame, lays it over the
    // whole of `widget`. False when the window must composite it itself.
    static bool paintShared(AppModel& model, QWidget& widget, const OutputFrameState& state);

private:
    OutputFrameState state_;
    QImage image_;
    QSize windowPixels_;
};
