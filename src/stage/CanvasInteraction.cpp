#include "stage/CanvasInteraction.h"

#include "model/AppModel.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr double newStrokeWidth = 0.008;
constexpr double leastFrameSide = 0.02;
// Sides come from differences of samples (0.52 - 0.5 is a hair above 0.02),
// so a frame must beat the least side by more than rounding noise.
constexpr double sideTolerance = 1e-9;
constexpr double zoomFloorOnClick = 1.6;
constexpr double zoomMin = 1.2;
constexpr double zoomMax = 6.0;
constexpr double pinchFactor = 2.2;
const QPointF defaultZoomCenter(0.5, 0.5);

double clampUnit(double v)
{
    // NaN from a broken event must not reach stored markup.
    if (!std::isfinite(v))
        return 0.5;
    return std::clamp(v, 0.0, 1.0);
}

double clampZoom(double v) { return std::clamp(v, zoomMin, zoomMax); }
}

namespace CanvasInput {

QPointF normalise(QPointF location, QSizeF size)
{
    const double x = size.width() > 1 ? location.x() / size.width() : location.x();
    const double y = size.height() > 1 ? location.y() / size.height() : location.y();
    return {clampUnit(x), clampUnit(y)};
}

double wheelDelta(QPoint pixelDelta, QPoint angleDelta)
{
    if (pixelDelta.y() != 0)
        return pixelDelta.y();
    // Angle deltas come in eighths of a degree, 120 to a notch.
    return angleDelta.y() / 120.0;
}

std::optional<double> wheelZoomStep(double delta)
{
    if (std::abs(delta) <= wheelDeadBand)
        return std::nullopt;
    return delta > 0 ? wheelStep : -wheelStep;
}

}

void AppModel::setTool(StageTool tool)
{
    const StageTool result = stageTool.peek() == tool ? StageTool::pointer : tool;
    stageTool.set(result);
    if (result != StageTool::laser)
        laserPoint.set(std::nullopt);
    if (result != StageTool::zoom)
        zoomCenter.set(std::nullopt);
    draftStroke.set(std::nullopt);
    draftFrameRect.set(std::nullopt);
}

void AppModel::returnToPointer()
{
    stageTool.set(StageTool::pointer);
    laserPoint.set(std::nullopt);
    zoomCenter.set(std::nullopt);
}

void AppModel::handleCanvasPoint(QPointF raw, bool ended)
{
    const QPointF point(clampUnit(raw.x()), clampUnit(raw.y()));
    switch (stageTool.peek()) {
    case StageTool::pointer:
        return;
    case StageTool::laser:
        laserPoint.set(ended ? std::nullopt : std::optional<QPointF>(point));
        return;
    case StageTool::marker: {
        Stroke draft;
        if (draftStroke.peek()) {
            draft = *draftStroke.peek();
            draft.points.push_back(point);
        } else {
            const MarkColor color = markColor.peek();
            draft.id = QUuid::createUuid();
            draft.points = {point};
            draft.red = color.red;
            draft.green = color.green;
            draft.blue = color.blue;
            draft.lineWidth = newStrokeWidth;
        }
        if (!ended) {
            draftStroke.set(std::move(draft));
            return;
        }
        draftStroke.set(std::nullopt);
        // A single point is a click, not a line.
        if (draft.points.size() < 2)
            return;
        const QString key = pageKey();
        const QUuid id = draft.id;
        strokesByPage.mutate([&](auto& byPage) { byPage[key].push_back(std::move(draft)); });
        pushUndo(AnnotationUndoRecord::AddedStroke{key, id});
        return;
    }
    case StageTool::frame: {
        QRectF draft;
        if (const auto& current = draftFrameRect.peek())
            draft = QRectF(current->topLeft(), QSizeF(point.x() - current->x(), point.y() - current->y()));
        else
            draft = QRectF(point, QSizeF(0, 0));
        if (!ended) {
            draftFrameRect.set(draft);
            return;
        }
        draftFrameRect.set(std::nullopt);
        const QRectF rect = draft.normalized();
        if (rect.width() > leastFrameSide + sideTolerance && rect.height() > leastFrameSide + sideTolerance) {
            const MarkColor color = markColor.peek();
            FrameRect frame{QUuid::createUuid(), rect, color.red, color.green, color.blue};
            const QString key = pageKey();
            const QUuid id = frame.id;
            framesByPage.mutate([&](auto& byPage) { byPage[key].push_back(std::move(frame)); });
            pushUndo(AnnotationUndoRecord::AddedFrame{key, id});
        }
        return;
    }
    case StageTool::zoom:
        zoomCenter.set(point);
        zoomScale.set(std::max(zoomScale.peek(), zoomFloorOnClick));
        return;
    }
}

void AppModel::nudgeZoom(double delta)
{
    if (stageTool.peek() != StageTool::zoom)
        return;
    zoomScale.set(clampZoom(zoomScale.peek() + delta));
    if (!zoomCenter.peek())
        zoomCenter.set(defaultZoomCenter);
}

void AppModel::pinchZoom(double magnification)
{
    if (stageTool.peek() != StageTool::zoom || !std::isfinite(magnification))
        return;
    zoomScale.set(clampZoom(magnification * pinchFactor));
    if (!zoomCenter.peek())
        zoomCenter.set(defaultZoomCenter);
}

void AppModel::setZoomScale(double scale)
{
    if (std::isfinite(scale))
        zoomScale.set(clampZoom(scale));
}
