#pragma once

#include "base/RawEnum.h"
#include "model/AnnotationTypes.h"

#include <QImage>
#include <QPointF>
#include <QRectF>
#include <QHashFunctions>
#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

using ImagePtr = std::shared_ptr<const QImage>;

enum class AspectMode { fillDisplay, r16x9, r16x10, r4x3, r3x2, r3x4, r1x1, r9x16, custom };

inline constexpr RawEnumTable<AspectMode, 9> aspectModes{{{
    {AspectMode::fillDisplay, "fillDisplay"},
    {AspectMode::r16x9, "r16x9"},
    {AspectMode::r16x10, "r16x10"},
    {AspectMode::r4x3, "r4x3"},
    {AspectMode::r3x2, "r3x2"},
    {AspectMode::r3x4, "r3x4"},
    {AspectMode::r1x1, "r1x1"},
    {AspectMode::r9x16, "r9x16"},
    {AspectMode::custom, "custom"},
}}};

// "16:9" and the like are literal; the two named modes are translated.
QString aspectModeTitle(AspectMode mode);

enum class ContentFit { contain, cover };

inline constexpr RawEnumTable<ContentFit, 2> contentFits{{{
    {ContentFit::contain, "contain"},
    {ContentFit::cover, "cover"},
}}};

enum class TransitionStyle { none, fade };

inline constexpr RawEnumTable<TransitionStyle, 2> transitionStyles{{{
    {TransitionStyle::none, "none"},
    {TransitionStyle::fade, "fade"},
}}};

// One connected display.
struct OutputDisplay {
    uint32_t id = 0;
    QString name;
    QRectF frame;  // points, global screen coordinates
    double backingScale = 1.0;
    bool isMain = false;

    bool operator==(const OutputDisplay&) const = default;

    // "Projector · 1920×1080"
    QString shortLabel() const;
};

// Combines the five fields in declaration order.
inline size_t qHash(const OutputDisplay& d, size_t seed = 0) noexcept
{
    return qHashMulti(seed, d.id, d.name, d.frame.x(), d.frame.y(), d.frame.width(), d.frame.height(), d.backingScale,
                      d.isMain);
}

template <>
struct std::hash<OutputDisplay> {
    size_t operator()(const OutputDisplay& d) const noexcept { return qHash(d); }
};

struct PixelSize {
    int width = 0;
    int height = 0;

    bool operator==(const PixelSize&) const = default;
};

// Everything one output frame draws; a plain value.
struct OutputFrameState {
    ImagePtr incoming;
    ImagePtr outgoing;
    double progress = 1.0;
    bool isBlackout = false;
    ContentFit fit = ContentFit::contain;
    std::optional<QPointF> laserPoint;
    std::optional<QPointF> zoomCenter;
    double zoomScale = 1.0;
    std::vector<Stroke> strokes;
    std::vector<FrameRect> frames;
    std::optional<Stroke> draftStroke;
    std::optional<QRectF> draftFrame;
    double accentRed = 1.0;
    double accentGreen = 0.16;
    double accentBlue = 0.12;

    bool operator==(const OutputFrameState&) const = default;
};
