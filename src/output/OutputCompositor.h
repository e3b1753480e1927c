#pragma once

#include "model/OutputTypes.h"

#include <QImage>
#include <QRectF>
#include <QSizeF>

class QPainter;

// Draws one output frame. The stage, the output window and the published
// frames all draw through here, so all three show the same picture.
namespace OutputCompositor {

// A frame of at least 2 × 2 pixels in the published bitmap format.
QImage makeImage(const OutputFrameState& state, QSize size);

// Draws into `painter`, whose origin is the canvas's top-left corner.
void draw(const OutputFrameState& state, QPainter& painter, QSizeF size);

// Draws a frame of `size` into `buffer` (kept by the caller between frames and
// remade only when the size changes), then lays it on `painter` at its origin.
// Slides that fit the buffer pixel for pixel are blended straight into it,
// which is much cheaper than the painter's three passes over a window.
void drawBuffered(const OutputFrameState& state, QPainter& painter, QSizeF size, QImage& buffer);

// Whether `draw` would lay the slides straight into the painter's image in
// one pass instead of through the painter (any pixel ratio qualifies).
bool blendsDirectly(const OutputFrameState& state, QPainter& painter, QSizeF size);

// `content` placed in `target`, centred: whole (contain) or filling it (cover).
QRectF fitted(QSizeF content, const QRectF& target, bool cover);

}
