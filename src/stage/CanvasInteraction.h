#pragma once

#include <QPoint>
#include <QPointF>
#include <QSizeF>

#include <optional>

// Rules that turn raw canvas input into model calls; shared by the canvas
// widget and its tests.
namespace CanvasInput {

inline constexpr double wheelStep = 0.15;
inline constexpr double wheelDeadBand = 0.1;
inline constexpr double pinchThreshold = 0.01;

// A location in a canvas of `size`, normalised and clamped to 0…1.
QPointF normalise(QPointF location, QSizeF size);

// The vertical wheel delta: the precise (pixel) one first, else the coarse one
// in notches.
double wheelDelta(QPoint pixelDelta, QPoint angleDelta);

// The zoom change for a wheel delta, or none when it lies in the dead band
// (the event is then passed on).
std::optional<double> wheelZoomStep(double delta);

}
