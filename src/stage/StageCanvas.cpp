#include "stage/StageCanvas.h"

#include "model/AppModel.h"
#include "output/OutputCompositor.h"
#include "stage/CanvasInteraction.h"

#include <QGestureEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QPinchGesture>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>


StageCanvas::StageCanvas(AppModel& model, QWidget* parent)
    : QWidget(parent)
    , model_(model)
{
    setMinimumSize(320, 180);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::NoFocus);
    setMouseTracking(true);  // the laser follows the pointer without a button
    grabGesture(Qt::PinchGesture);
    follower_ = new obs::Follower([this] { refresh(); }, this);
    follower_->start();
}

// Collects what the stage shows, under tracking, so any change redraws.
void StageCanvas::refresh()
{
    // The stage's picture leaves out the output's fade and blackout, so
    // those change nothing here; an equal picture is not drawn again.
    OutputFrameState state = model_.stagePreviewState();
    const PixelSize frame = model_.syphonPixelSize();
    if (state == state_ && painted_ && frame == frame_)
        return;
    painted_ = true;
    frame_ = frame;
    state_ = std::move(state);
    // The canvas takes the slide's own aspect, so that normalised points land
    // on the slide; without a slide, that of the published frame.
    if (state_.incoming && !state_.incoming->isNull()) {
        aspect_ = QSizeF(state_.incoming->size());
    } else {
        aspect_ = QSizeF(std::max(frame.width, 1), std::max(frame.height, 1));
    }
    ++repaintRequests_;
    update();
}

QRectF StageCanvas::pictureRect() const
{
    QSizeF size = aspect_;
    size.scale(QSizeF(width(), height()), Qt::KeepAspectRatio);
    return QRectF((width() - size.width()) / 2, (height() - size.height()) / 2, size.width(), size.height());
}

QPointF StageCanvas::normalised(QPointF position) const
{
    const QRectF picture = pictureRect();
    return CanvasInput::normalise(position - picture.topLeft(), picture.size());
}

bool StageCanvas::isDragTool() const
{
    const StageTool tool = model_.stageTool.peek();
    return tool != StageTool::pointer && tool != StageTool::laser;
}

void StageCanvas::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), Qt::black);
    const QRectF picture = pictureRect();
    painter.setClipRect(picture);
    painter.translate(picture.topLeft());
    OutputCompositor::draw(state_, painter, picture.size());
}

void StageCanvas::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !isDragTool()) {
        QWidget::mousePressEvent(event);
        return;
    }
    // The press is sent with the first move, so that a click without movement
    // reaches the model as one final sample (a marker click stores nothing).
    dragging_ = true;
    pressPending_ = true;
    pressPoint_ = normalised(event->position());
    event->accept();
}

void StageCanvas::mouseMoveEvent(QMouseEvent* event)
{
    if (model_.stageTool.peek() == StageTool::laser) {
        model_.handleCanvasPoint(normalised(event->position()), false);
        event->accept();
        return;
    }
    // Outside the canvas the grab keeps delivering moves; they clamp to the edge.
    if (dragging_ && isDragTool()) {
        if (pressPending_) {
            pressPending_ = false;
            model_.handleCanvasPoint(pressPoint_, false);
        }
        model_.handleCanvasPoint(normalised(event->position()), false);
        event->accept();
        return;
    }
    QWidget::mouseMoveEvent(event);
}

void StageCanvas::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !dragging_) {
        QWidget::mouseReleaseEvent(event);
        return;
    }
    dragging_ = false;
    pressPending_ = false;
    if (isDragTool())
        model_.handleCanvasPoint(normalised(event->position()), true);
    event->accept();
}

void StageCanvas::leaveEvent(QEvent* event)
{
    // The hover's end hides the laser dot.
    if (model_.stageTool.peek() == StageTool::laser)
        model_.handleCanvasPoint(QPointF(0.5, 0.5), true);
    QWidget::leaveEvent(event);
}

void StageCanvas::wheelEvent(QWheelEvent* event)
{
    const double delta = CanvasInput::wheelDelta(event->pixelDelta(), event->angleDelta());
    const auto step = CanvasInput::wheelZoomStep(delta);
    if (!step) {
        event->ignore();  // small deltas go on to whoever is behind
        return;
    }
    model_.nudgeZoom(*step);
    event->accept();
}

void StageCanvas::pinchTo(double magnification)
{
    // Report only changes of at least the threshold, like a magnify recogniser.
    if (std::abs(magnification - pinchReported_) < CanvasInput::pinchThreshold)
        return;
    pinchReported_ = magnification;
    model_.pinchZoom(magnification);
}

bool StageCanvas::event(QEvent* event)
{
    if (event->type() == QEvent::NativeGesture) {
        auto* gesture = static_cast<QNativeGestureEvent*>(event);
        switch (gesture->gestureType()) {
        case Qt::BeginNativeGesture:
            pinchRunning_ = 1.0;
            pinchReported_ = 1.0;
            break;
        case Qt::ZoomNativeGesture:
            // Touchpads report the change since the last event.
            pinchRunning_ *= 1.0 + gesture->value();
            pinchTo(pinchRunning_);
            break;
        default:
            break;
        }
        event->accept();
        return true;
    }
    if (event->type() == QEvent::Gesture) {
        auto* gestures = static_cast<QGestureEvent*>(event);
        if (auto* pinch = static_cast<QPinchGesture*>(gestures->gesture(Qt::PinchGesture))) {
            if (pinch->state() == Qt::GestureStarted)
                pinchReported_ = 1.0;
            pinchTo(pinch->totalScaleFactor());
            gestures->accept(pinch);
        }
        return true;
    }
    return QWidget::event(event);
}
