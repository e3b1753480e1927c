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
    update();
}

QRectF StageCanvas::slideRect() const
{
    QSizeF aspect(16, 9);
    if (state_.incoming && !state_.incoming->isNull())
        aspect = state_.incoming->size();
    QSizeF size = aspect;
    size.scale(QSizeF(width(), height()), Qt::KeepAspectRatio);
    return QRectF((width() - size.width()) / 2, (height() - size.height()) / 2, size.width(), size.height());
}

QPointF StageCanvas::normalised(QPointF position) const
{
    const QRectF slide = slideRect();
    return CanvasInput::normalise(position - slide.topLeft(), slide.size());
}

bool StageCanvas::isDragTool() const
{
    const StageTool tool = model_.stageTool.peek();
    return tool != StageTool::pointer && tool != StageTool::laser;
}

void StageCanvas::paintEvent(QPaintEvent*)
{
    // Plain drawing of the preview and its markup; the shared compositor
    // takes this over once it is available.
    QPainter p(this);
    p.fillRect(rect(), Qt::black);
    const QRectF slide = slideRect();
    p.setClipRect(slide);
    p.setRenderHint(QPainter::Antialiasing);
    p.setRenderHint(QPainter::SmoothPixmapTransform);
    p.translate(slide.topLeft());
    const double w = slide.width();
    const double h = slide.height();
    if (state_.zoomCenter) {
        const QPointF c(state_.zoomCenter->x() * w, state_.zoomCenter->y() * h);
        p.translate(c);
        p.scale(state_.zoomScale, state_.zoomScale);
        p.translate(-c);
    }
    if (state_.incoming && !state_.incoming->isNull())
        p.drawImage(QRectF(0, 0, w, h), *state_.incoming);

    const auto at = [&](QPointF n) { return QPointF(n.x() * w, n.y() * h); };
    const auto drawStroke = [&](const Stroke& s) {
        if (s.points.empty())
            return;
        QPainterPath path(at(s.points.front()));
        for (std::size_t i = 1; i < s.points.size(); ++i)
            path.lineTo(at(s.points[i]));
        p.setPen(QPen(colorOf(s.red, s.green, s.blue), std::max(1.0, s.lineWidth * w), Qt::SolidLine, Qt::RoundCap,
                      Qt::RoundJoin));
        p.setBrush(Qt::NoBrush);
        p.drawPath(path);
    };
    const auto drawRect = [&](QRectF r, QColor color) {
        p.setPen(QPen(color, std::max(1.0, 0.004 * w)));
        p.setBrush(Qt::NoBrush);
        p.drawRect(QRectF(at(r.topLeft()), at(r.bottomRight())).normalized());
    };
    for (const auto& s : state_.strokes)
        drawStroke(s);
    for (const auto& f : state_.frames)
        drawRect(f.rect, colorOf(f.red, f.green, f.blue));
    const QColor accent = colorOf(state_.accentRed, state_.accentGreen, state_.accentBlue);
    if (state_.draftStroke)
        drawStroke(*state_.draftStroke);
    if (state_.draftFrame)
        drawRect(*state_.draftFrame, accent);
    if (state_.laserPoint) {
        const double r = std::max(4.0, 0.012 * w);
        p.setPen(Qt::NoPen);
        p.setBrush(accent);
        p.drawEllipse(at(*state_.laserPoint), r, r);
    }
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
