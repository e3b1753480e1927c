#pragma once

#include "output/OutputTypes.h"

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

// `content` placed in `target`, centred: whole (contain) or filling it (cover).
QRectF fitted(QSizeF content, const QRectF& target, bool cover);

}
