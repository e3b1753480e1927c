#include "SharedOutputFrame.h"

#include "model/AppModel.h"
#include "output/FramePublisher.h"

#include <QPainter>
#include <QWidget>

void SharedOutputFrame::offer(const OutputFrameState& state, const QImage& image)
{
    state_ = state;
    image_ = image;
}

QImage SharedOutputFrame::take(const OutputFrameState& state, QSize pixels) const
{
    if (image_.isNull() || image_.size() != pixels || !(state_ == state))
        return {};
    return image_;
}

void SharedOutputFrame::clear()
{
    state_ = {};
    image_ = {};
}

bool SharedOutputFrame::paintShared(AppModel& model, QWidget& widget, const OutputFrameState& state)
{
    FramePublisher* publisher = model.framePublisher();
    if (!publisher)
        return false;
    SharedOutputFrame& shared = publisher->sharedFrame();
    const QSize pixels = (QSizeF(widget.size()) * widget.devicePixelRatioF()).toSize();
    shared.noteWindowPixels(pixels);
    const QImage frame = shared.take(state, pixels);
    if (frame.isNull())
        return false;
    QPainter painter(&widget);
    // The frame is opaque: a copy, no blending.
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawImage(QRectF(widget.rect()), frame);
    return true;
}
