#include "OutputCompositor.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace OutputCompositor {

namespace {

constexpr double fadeThreshold = 0.999;
constexpr double zoomThreshold = 1.02;
constexpr double frameFillAlpha = 0.12;
constexpr double strokeAlpha = 0.92;
constexpr double laserGlow = 34;
constexpr double laserCore = 12;
constexpr double laserGlowAlpha = 0.28;

bool isZoomed(const OutputFrameState& state)
{
    return std::max(state.zoomScale, 1.0) > zoomThreshold && state.zoomCenter;
}

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
    // Smoothing costs a lot and changes nothing when the slide lands on the
    // device pixel for pixel; zoom, a window and the pixel ratio all scale it.
    const QTransform toDevice = p.combinedTransform();
    const QRectF onDevice = toDevice.mapRect(target);
    const bool scaled = toDevice.type() > QTransform::TxScale || qAbs(onDevice.width() - image->width()) > 0.5
        || qAbs(onDevice.height() - image->height()) > 0.5;
    p.setRenderHint(QPainter::SmoothPixmapTransform, scaled);
    p.drawImage(target, *image);
    p.restore();
}

// ---- Cross-fade straight into a frame bitmap ----
//
// The published frame is a 32-bit image the size of the canvas, and the
// slides are rendered at that size, so they usually map 1:1 onto its pixels.
// Then the black fill and the two alpha blends, three passes over the whole
// frame, are done in one pass: for the outgoing pixel o (drawn at alpha b over
// black) and the incoming pixel i (at alpha a over that), premultiplied,
//     d = i·a + o·b·(1 − iα·a),   opaque.
// The result equals the painter's within rounding.

bool isFrameFormat(QImage::Format f)
{
    return f == QImage::Format_ARGB32_Premultiplied || f == QImage::Format_RGB32;
}

// The painter's target in device pixels: widgets report logical units,
// images and pixmaps pixels.
QSizeF devicePixels(const QPaintDevice& device)
{
    const QSizeF metric(device.width(), device.height());
    return device.devType() == QInternal::Widget ? metric * device.devicePixelRatioF() : metric;
}

// The rectangle, in the target's pixels, that both slides cover pixel for
// pixel, or an empty one when the painter must draw them (zoom, clipping,
// scaling, another device…). Any pixel ratio of the target qualifies: the
// slides are then rendered at the frame's pixel size, not its logical one.
QRect directArea(QPainter& p, const OutputFrameState& state, bool drawOutgoing, bool cover, QSizeF size)
{
    if (!state.incoming || state.incoming->isNull() || p.device()->devType() != QInternal::Image)
        return {};
    const auto* target = static_cast<const QImage*>(p.device());
    const double ratio = target->devicePixelRatio();
    if (!isFrameFormat(target->format()) || std::abs(size.width() * ratio - target->width()) > 1e-6
        || std::abs(size.height() * ratio - target->height()) > 1e-6)
        return {};
    // Only the pixel ratio may stand between the canvas and the pixels: no
    // world transform, window or viewport.
    if (p.deviceTransform() != QTransform::fromScale(ratio, ratio) || p.hasClipping() || p.opacity() != 1.0
        || p.compositionMode() != QPainter::CompositionMode_SourceOver)
        return {};
    const QImage& in = *state.incoming;
    const QRectF logical = fitted(QSizeF(in.size()), QRectF(QPointF(0, 0), size), cover);
    const QRectF f(logical.topLeft() * ratio, logical.size() * ratio);
    // An unscaled image lands on the pixel grid the way the painter rounds it
    // (a slide a pixel short of the frame sits half a pixel off).
    if (std::abs(f.width() - in.width()) > 1e-6 || std::abs(f.height() - in.height()) > 1e-6)
        return {};
    const QRect area(QPoint(qRound(f.x()), qRound(f.y())), in.size());
    if (!target->rect().contains(area) || !isFrameFormat(in.format()))
        return {};
    if (drawOutgoing) {
        const QImage& out = *state.outgoing;
        if (out.isNull() || out.size() != in.size() || !isFrameFormat(out.format()))
            return {};
    }
    return area;
}

// x·f / 255 for 8-bit x and f, rounded, as the painter computes it.
inline uint32_t mul255(uint32_t x, uint32_t f)
{
    const uint32_t t = x * f + 128;
    return (t + (t >> 8)) >> 8;
}

// One pixel the long way, for any alpha of the incoming slide.
inline uint32_t blendPixel(uint32_t in, const uint32_t* out, uint32_t a, uint32_t b)
{
    const uint32_t keep = 255 - mul255(in >> 24, a);
    uint32_t d = 0xFF000000u;
    for (int shift = 0; shift < 24; shift += 8) {
        const uint32_t under = out ? mul255(mul255((*out >> shift) & 0xFF, b), keep) : 0;
        d |= std::min<uint32_t>(mul255((in >> shift) & 0xFF, a) + under, 255) << shift;
    }
    return d;
}

// Blends one row of `count` pixels; `out` may be null (no outgoing image).
// `a` and `b` are the alphas of the incoming and outgoing images, 0…255.
void blendRow(uint32_t* dst, const uint32_t* in, const uint32_t* out, int count, uint32_t a, uint32_t b)
{
    int x = 0;
#if defined(__SSE2__)
    // Where the incoming slide is opaque, which is nearly always, the
    // outgoing one shows through at b·(1 − a), so d = (i·a + o·c) / 255 with
    // a + c ≤ 255: one rounding in 16 bits. Other pixels go the long way.
    const uint32_t c = mul255(b, 255 - a);
    const __m128i zero = _mm_setzero_si128();
    const __m128i half = _mm_set1_epi16(128);
    const __m128i opaque = _mm_set1_epi32(int(0xFF000000u));
    const __m128i va = _mm_set1_epi16(short(a));
    const __m128i vc = _mm_set1_epi16(short(c));
    const auto div255 = [&](__m128i v) {
        const __m128i t = _mm_add_epi16(v, half);
        return _mm_srli_epi16(_mm_add_epi16(t, _mm_srli_epi16(t, 8)), 8);
    };
    const auto blend8 = [&](__m128i i16, __m128i o16) {
        return div255(_mm_add_epi16(_mm_mullo_epi16(i16, va), _mm_mullo_epi16(o16, vc)));
    };
    for (; x + 4 <= count; x += 4) {
        const __m128i i = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in + x));
        if (_mm_movemask_epi8(_mm_cmpeq_epi32(_mm_and_si128(i, opaque), opaque)) != 0xFFFF) {
            for (int k = x; k < x + 4; ++k)
                dst[k] = blendPixel(in[k], out ? out + k : nullptr, a, b);
            continue;
        }
        const __m128i o = out ? _mm_loadu_si128(reinterpret_cast<const __m128i*>(out + x)) : zero;
        const __m128i lo = blend8(_mm_unpacklo_epi8(i, zero), _mm_unpacklo_epi8(o, zero));
        const __m128i hi = blend8(_mm_unpackhi_epi8(i, zero), _mm_unpackhi_epi8(o, zero));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(dst + x), _mm_or_si128(_mm_packus_epi16(lo, hi), opaque));
    }
#endif
    for (; x < count; ++x)
        dst[x] = blendPixel(in[x], out ? out + x : nullptr, a, b);
}

void blendDirect(QPainter& p, const QRect& area, const OutputFrameState& state, bool drawOutgoing, double progress)
{
    auto* target = static_cast<QImage*>(p.device());
    const QImage& in = *state.incoming;
    const QImage* out = drawOutgoing ? state.outgoing.get() : nullptr;
    // Opacity in 8 bits as the painter takes it: 256 steps, scaled to 255.
    const auto eightBit = [](double alpha) { return uint32_t((std::lround(alpha * 256) * 255) >> 8); };
    const uint32_t a = eightBit(progress);
    const uint32_t b = eightBit(1.0 - progress);
    // The painter works on this same buffer: write through it, never detach.
    uchar* bits = const_cast<uchar*>(target->constBits());
    const qsizetype stride = target->bytesPerLine();
    for (int y = 0; y < area.height(); ++y) {
        auto* dst = reinterpret_cast<uint32_t*>(bits + (area.y() + y) * stride) + area.x();
        const auto* src = reinterpret_cast<const uint32_t*>(in.constScanLine(y));
        if (!out && a == 255) {
            // The slide alone at full strength: a copy, made opaque.
            for (int x = 0; x < area.width(); ++x)
                dst[x] = src[x] | 0xFF000000u;
            continue;
        }
        blendRow(dst, src, out ? reinterpret_cast<const uint32_t*>(out->constScanLine(y)) : nullptr, area.width(), a,
                 b);
    }
}

// Opaque black everywhere on the target except `hole` (pixels), written
// straight into the pixels like the blend inside the hole.
void fillAround(QPainter& p, const QRect& hole)
{
    auto* target = static_cast<QImage*>(p.device());
    uchar* bits = const_cast<uchar*>(target->constBits());
    const qsizetype stride = target->bytesPerLine();
    const int width = target->width();
    const auto fill = [](uint32_t* row, int from, int to) { std::fill(row + from, row + to, 0xFF000000u); };
    for (int y = 0; y < target->height(); ++y) {
        auto* row = reinterpret_cast<uint32_t*>(bits + y * stride);
        if (y < hole.top() || y > hole.bottom()) {
            fill(row, 0, width);
        } else {
            fill(row, 0, hole.left());
            fill(row, hole.right() + 1, width);
        }
    }
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
    // Canvas units to device pixels: the world (zoom), the window and the
    // target's pixel ratio together.
    const QTransform toDevice = p.combinedTransform();
    const double scale = std::sqrt(std::abs(toDevice.determinant()));
    const double line = std::max(stroke.lineWidth * std::min(size.width(), size.height()), 2.0) * scale;
    QPolygonF points;
    points.reserve(qsizetype(stroke.points.size()));
    for (const QPointF& n : stroke.points)
        points << toDevice.map(QPointF(n.x() * size.width(), n.y() * size.height()));

    // Half the line and a pixel of antialiasing on each side.
    const double margin = line / 2 + 2;
    const QRect device(QPoint(0, 0), devicePixels(*p.device()).toSize());
    const QRect area = points.boundingRect().adjusted(-margin, -margin, margin, margin).toAlignedRect() & device;
    if (area.isEmpty())
        return;
    // One scratch layer serves every stroke: a fresh one per stroke costs more
    // in allocation and page faults than drawing the stroke itself.
    thread_local QImage scratch;
    if (scratch.width() < area.width() || scratch.height() < area.height())
        scratch = QImage(area.size().expandedTo(scratch.size()), QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < area.height(); ++y)
        std::memset(scratch.scanLine(y), 0, size_t(area.width()) * 4);
    {
        QPainter lp(&scratch);
        lp.setClipRect(QRect(QPoint(0, 0), area.size()));
        lp.setRenderHint(QPainter::Antialiasing);
        lp.translate(-area.topLeft());
        lp.setPen(QPen(colour(stroke.red, stroke.green, stroke.blue), line, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        for (qsizetype i = 1; i < points.size(); ++i)
            lp.drawLine(points[i - 1], points[i]);
    }
    p.save();
    // Lay the layer pixel for pixel: undo every transform, the pixel ratio's too.
    p.setViewTransformEnabled(false);
    const double ratio = p.device()->devicePixelRatioF();
    p.setWorldTransform(QTransform::fromScale(1 / ratio, 1 / ratio));
    p.setOpacity(p.opacity() * strokeAlpha);
    p.drawImage(QPointF(area.topLeft()), scratch, QRect(QPoint(0, 0), area.size()));
    p.restore();
}

}

bool blendsDirectly(const OutputFrameState& state, QPainter& painter, QSizeF size)
{
    if (state.isBlackout || isZoomed(state))
        return false;
    const bool drawOutgoing = state.outgoing && std::clamp(state.progress, 0.0, 1.0) < fadeThreshold;
    return !directArea(painter, state, drawOutgoing, state.fit == ContentFit::cover, size).isEmpty();
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

void drawBuffered(const OutputFrameState& state, QPainter& painter, QSizeF size, QImage& buffer)
{
    // Pixels at the target's resolution, markup sizes in its units.
    const qreal ratio = painter.device()->devicePixelRatioF();
    const QSize pixels = (QSizeF(std::max(size.width(), 2.0), std::max(size.height(), 2.0)) * ratio).toSize();
    if (buffer.size() != pixels || buffer.format() != QImage::Format_ARGB32_Premultiplied)
        buffer = QImage(pixels, QImage::Format_ARGB32_Premultiplied);
    buffer.setDevicePixelRatio(ratio);
    {
        QPainter bp(&buffer);
        draw(state, bp, QSizeF(pixels) / ratio);
    }
    painter.save();
    // The frame is opaque: a copy, no blending.
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawImage(QPointF(0, 0), buffer);
    painter.restore();
}

void draw(const OutputFrameState& state, QPainter& p, QSizeF size)
{
    const double w = size.width();
    const double h = size.height();
    if (state.isBlackout) {
        p.fillRect(QRectF(0, 0, w, h), Qt::black);
        return;
    }

    const double s = std::max(state.zoomScale, 1.0);
    const bool zoomed = isZoomed(state);
    const double progress = std::clamp(state.progress, 0.0, 1.0);
    const bool cover = state.fit == ContentFit::cover;
    const bool drawOutgoing = state.outgoing && progress < fadeThreshold;
    const QRect direct = zoomed ? QRect() : directArea(p, state, drawOutgoing, cover, size);
    if (direct.isEmpty())
        p.fillRect(QRectF(0, 0, w, h), Qt::black);
    else
        fillAround(p, direct);

    p.save();
    p.setRenderHint(QPainter::Antialiasing);
    if (zoomed) {
        const double cx = std::clamp(state.zoomCenter->x(), 0.0, 1.0) * w;
        const double cy = std::clamp(state.zoomCenter->y(), 0.0, 1.0) * h;
        p.translate(w / 2, h / 2);
        p.scale(s, s);
        p.translate(-cx, -cy);
    }

    if (!direct.isEmpty()) {
        blendDirect(p, direct, state, drawOutgoing, progress);
    } else {
        if (drawOutgoing)
            drawImage(p, state.outgoing, 1.0 - progress, cover, size);
        if (state.incoming)
            drawImage(p, state.incoming, progress, cover, size);
    }

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
