#include "stage/StageCanvas.h"

#include "model/AppModel.h"
#include "stage/CanvasInteraction.h"

#include <QGestureEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPinchGesture>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace {
QColor colorOf(double r, double g, double b)
{
    return QColor::fromRgbF(static_cast<float>(r), static_cast<float>(g), static_cast<float>(b));
}
}

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
    OutputFrameState s;
    s.incoming = model_.previewSlideImage();
    s.fit = ContentFit::contain;
    s.laserPoint = model_.laserPoint();
    s.zoomCenter = model_.zoomCenter();
    s.zoomScale = model_.zoomScale();
    const QString key = model_.pageKey();
    if (const auto it = model_.strokesByPage().find(key); it != model_.strokesByPage().end())
        s.strokes = it->second;
    if (const auto it = model_.framesByPage().find(key); it != model_.framesByPage().end())
        s.frames = it->second;
    s.draftStroke = model_.draftStroke();
    s.draftFrame = model_.draftFrameRect();
    const MarkColor color = model_.markColor();
    s.accentRed = color.red;
    s.accentGreen = color.green;
    s.accentBlue = color.blue;
    state_ = std::move(s);
    // The audience's picture has the published frame's aspect.
    const PixelSize frame = model_.syphonPixelSize();
    aspect_ = QSizeF(std::max(frame.width, 1), std::max(frame.height, 1));
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

namespace {
// Stand-in for the shared compositor, which is not in this branch yet: the
// same drawing rules, so the stage looks as the output will.
// COMPOSITOR-MERGE: replace with OutputCompositor::draw(state, painter, size).
void drawPreview(const OutputFrameState& state, QPainter& p, QSizeF size)
{
    const double w = size.width();
    const double h = size.height();
    const double shorter = std::min(w, h);
    p.fillRect(QRectF(0, 0, w, h), Qt::black);
    if (state.isBlackout)
        return;
    p.save();
    p.setRenderHint(QPainter::Antialiasing);
    p.setRenderHint(QPainter::SmoothPixmapTransform);
    const double s = std::max(state.zoomScale, 1.0);
    if (s > 1.02 && state.zoomCenter) {
        p.translate(w / 2, h / 2);
        p.scale(s, s);
        p.translate(-std::clamp(state.zoomCenter->x(), 0.0, 1.0) * w, -std::clamp(state.zoomCenter->y(), 0.0, 1.0) * h);
    }
    if (state.incoming && !state.incoming->isNull()) {
        QSizeF fitted = state.incoming->size();
        fitted.scale(size, state.fit == ContentFit::cover ? Qt::KeepAspectRatioByExpanding : Qt::KeepAspectRatio);
        p.drawImage(QRectF(QPointF((w - fitted.width()) / 2, (h - fitted.height()) / 2), fitted), *state.incoming);
    }
    const auto at = [&](QPointF n) { return QPointF(n.x() * w, n.y() * h); };
    const auto drawFrame = [&](QRectF r, QColor color) {
        const QRectF scaled = QRectF(at(r.topLeft()), at(r.bottomRight())).normalized();
        if (scaled.width() <= 1 || scaled.height() <= 1)
            return;
        QColor fill = color;
        fill.setAlphaF(0.12f);
        p.setPen(QPen(color, std::max(0.007 * shorter, 3.0), Qt::SolidLine, Qt::SquareCap, Qt::RoundJoin));
        p.setBrush(fill);
        p.drawRect(scaled);
    };
    const auto drawStroke = [&](const Stroke& stroke) {
        if (stroke.points.size() < 2)
            return;
        QPainterPath path(at(stroke.points.front()));
        for (std::size_t i = 1; i < stroke.points.size(); ++i)
            path.lineTo(at(stroke.points[i]));
        QColor color = colorOf(stroke.red, stroke.green, stroke.blue);
        color.setAlphaF(0.92f);
        p.setPen(QPen(color, std::max(stroke.lineWidth * shorter, 2.0), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        p.setBrush(Qt::NoBrush);
        p.drawPath(path);
    };
    const QColor accent = colorOf(state.accentRed, state.accentGreen, state.accentBlue);
    for (const auto& f : state.frames)
        drawFrame(f.rect, colorOf(f.red, f.green, f.blue));
    if (state.draftFrame)
        drawFrame(*state.draftFrame, accent);
    for (const auto& stroke : state.strokes)
        drawStroke(stroke);
    if (state.draftStroke)
        drawStroke(*state.draftStroke);
    if (state.laserPoint) {
        const QPointF c = at(*state.laserPoint);
        QColor glow = accent;
        glow.setAlphaF(0.28f);
        p.setPen(Qt::NoPen);
        p.setBrush(glow);
        p.drawEllipse(c, 17.0, 17.0);
        p.setBrush(accent);
        p.drawEllipse(c, 6.0, 6.0);
    }
    p.restore();
}
}

void StageCanvas::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), Qt::black);
    const QRectF picture = pictureRect();
    painter.setClipRect(picture);
    painter.translate(picture.topLeft());
    drawPreview(state_, painter, picture.size());
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
