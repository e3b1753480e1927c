#include "OutputCompositor.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace OutputCompositor {

namespace {

constexpr double fadeThreshold = 0.999;
constexpr double zoomThreshold = 1.02;
constexpr double frameFillAlpha = 0.12;
constexpr double strokeAlpha = 0.92;
constexpr double laserGlow = 34;
constexpr double laserCore = 12;
constexpr double laserGlowAlpha = 0.28;

QColor colour(double r, double g, double b, double alpha = 1.0)
{
    return QColor::fromRgbF(float(std::clamp(r, 0.0, 1.0)), float(std::clamp(g, 0.0, 1.0)),
                            float(std::clamp(b, 0.0, 1.0)), float(alpha));
}

void drawImage(QPainter& p, const ImagePtr& image, double alpha, bool cover, QSizeF size)
{
    if (!image || image->isNull())
        return;
    const QRectF target = fitted(QSizeF(image->size()), QRectF(QPointF(0, 0), size), cover);
    p.save();
    p.setOpacity(alpha);
    // Smoothing costs a lot and changes nothing when no scaling happens.
    const bool scaled = qAbs(target.width() - image->width()) > 0.5 || qAbs(target.height() - image->height()) > 0.5
        || !p.transform().isIdentity();
    p.setRenderHint(QPainter::SmoothPixmapTransform, scaled);
    p.drawImage(target, *image);
    p.restore();
}

void drawFrame(QPainter& p, const QRectF& normalised, const QColor& c, QSizeF size)
{
    const QRectF r = QRectF(normalised.x() * size.width(), normalised.y() * size.height(),
                            normalised.width() * size.width(), normalised.height() * size.height())
                         .normalized();
    if (r.width() <= 1 || r.height() <= 1)
        return;
    p.save();
    QColor fill = c;
    fill.setAlphaF(float(frameFillAlpha));
    const double line = std::max(0.007 * std::min(size.width(), size.height()), 3.0);
    p.setPen(QPen(c, line, Qt::SolidLine, Qt::SquareCap, Qt::RoundJoin));
    p.setBrush(fill);
    p.drawRect(r);
    p.restore();
}

// A translucent stroke must not darken where its segments overlap, and
// antialiased wide paths are slow to fill. So the stroke is drawn opaque, as
// round-capped segments (their union is the round-joined line), into a layer
// in device pixels, which is then laid over the frame at the stroke alpha.
void drawStroke(QPainter& p, const Stroke& stroke, QSizeF size)
{
    if (stroke.points.size() < 2)
        return;
    const QTransform toDevice = p.worldTransform();
    const double zoom = std::sqrt(std::abs(toDevice.determinant()));
    const double line = std::max(stroke.lineWidth * std::min(size.width(), size.height()), 2.0) * zoom;
    QPolygonF points;
    points.reserve(qsizetype(stroke.points.size()));
    for (const QPointF& n : stroke.points)
        points << toDevice.map(QPointF(n.x() * size.width(), n.y() * size.height()));

    const QRect device(0, 0, p.device()->width(), p.device()->height());
    const QRect area = points.boundingRect().adjusted(-line, -line, line, line).toAlignedRect() & device;
    if (area.isEmpty())
        return;
    const qreal ratio = p.device()->devicePixelRatioF();
    QImage layer(area.size() * ratio, QImage::Format_ARGB32_Premultiplied);
    layer.setDevicePixelRatio(ratio);
    layer.fill(Qt::transparent);
    {
        QPainter lp(&layer);
        lp.setRenderHint(QPainter::Antialiasing);
        lp.translate(-area.topLeft());
        lp.setPen(QPen(colour(stroke.red, stroke.green, stroke.blue), line, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        for (qsizetype i = 1; i < points.size(); ++i)
            lp.drawLine(points[i - 1], points[i]);
    }
    p.save();
    p.resetTransform();
    p.setOpacity(p.opacity() * strokeAlpha);
    p.drawImage(area.topLeft(), layer);
    p.restore();
}

}

QRectF fitted(QSizeF content, const QRectF& target, bool cover)
{
    const double sx = target.width() / std::max(content.width(), 1.0);
    const double sy = target.height() / std::max(content.height(), 1.0);
    const double s = cover ? std::max(sx, sy) : std::min(sx, sy);
    const QSizeF size(content.width() * s, content.height() * s);
    return QRectF(target.center().x() - size.width() / 2, target.center().y() - size.height() / 2, size.width(),
                  size.height());
}

QImage makeImage(const OutputFrameState& state, QSize size)
{
    const QSize clamped(std::max(size.width(), 2), std::max(size.height(), 2));
    QImage image(clamped, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    draw(state, painter, QSizeF(clamped));
    return image;
}

void draw(const OutputFrameState& state, QPainter& p, QSizeF size)
{
    const double w = size.width();
    const double h = size.height();
    p.fillRect(QRectF(0, 0, w, h), Qt::black);
    if (state.isBlackout)
        return;
    p.save();
    p.setRenderHint(QPainter::Antialiasing);

    const double s = std::max(state.zoomScale, 1.0);
    if (s > zoomThreshold && state.zoomCenter) {
        const double cx = std::clamp(state.zoomCenter->x(), 0.0, 1.0) * w;
        const double cy = std::clamp(state.zoomCenter->y(), 0.0, 1.0) * h;
        p.translate(w / 2, h / 2);
        p.scale(s, s);
        p.translate(-cx, -cy);
    }

    const double progress = std::clamp(state.progress, 0.0, 1.0);
    const bool cover = state.fit == ContentFit::cover;
    if (state.outgoing && progress < fadeThreshold)
        drawImage(p, state.outgoing, 1.0 - progress, cover, size);
    if (state.incoming)
        drawImage(p, state.incoming, progress, cover, size);

    for (const FrameRect& frame : state.frames)
        drawFrame(p, frame.rect, colour(frame.red, frame.green, frame.blue), size);
    const QColor accent = colour(state.accentRed, state.accentGreen, state.accentBlue);
    if (state.draftFrame)
        drawFrame(p, *state.draftFrame, accent, size);
    for (const Stroke& stroke : state.strokes)
        drawStroke(p, stroke, size);
    if (state.draftStroke)
        drawStroke(p, *state.draftStroke, size);

    if (state.laserPoint) {
        // Fixed sizes in canvas units: the dot reads the same on any canvas.
        const QPointF c(state.laserPoint->x() * w, state.laserPoint->y() * h);
        QColor glow = accent;
        glow.setAlphaF(float(laserGlowAlpha));
        p.setPen(Qt::NoPen);
        p.setBrush(glow);
        p.drawEllipse(c, laserGlow / 2, laserGlow / 2);
        p.setBrush(accent);
        p.drawEllipse(c, laserCore / 2, laserCore / 2);
    }
    p.restore();
}

}
