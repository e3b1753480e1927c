#pragma once

#include "base/RawEnum.h"

#include <QPointF>
#include <QRectF>
#include <QString>
#include <QUuid>
#include <QtGlobal>

#include <array>
#include <functional>
#include <optional>
#include <variant>
#include <vector>

enum class StageTool { pointer, laser, marker, frame, zoom };

// The raw value doubles as the interface-text key of the tool's title.
inline constexpr RawEnumTable<StageTool, 5> stageTools{{{
    {StageTool::pointer, "pointer"},
    {StageTool::laser, "laser"},
    {StageTool::marker, "marker"},
    {StageTool::frame, "frame"},
    {StageTool::zoom, "zoom"},
}}};

// Title of a tool as an interface-text key.
inline QString stageToolTitleKey(StageTool tool) { return stageTools.rawValue(tool); }
// Decodes a stored or typed tool name; an unknown name gives none.
inline std::optional<StageTool> stageToolFromRaw(QStringView raw) { return stageTools.fromRaw(raw); }

// A free-hand marker line; points normalised to the slide.
struct Stroke {
    QUuid id;
    std::vector<QPointF> points;
    double red = 0;
    double green = 0;
    double blue = 0;
    double lineWidth = 0.008;

    bool operator==(const Stroke&) const = default;
};

// A rectangle, normalised and standardised.
struct FrameRect {
    QUuid id;
    QRectF rect;
    double red = 0;
    double green = 0;
    double blue = 0;

    bool operator==(const FrameRect&) const = default;
};

struct MarkColor {
    double red = 1.0;
    double green = 0.16;
    double blue = 0.12;

    bool operator==(const MarkColor&) const = default;

    // The palette offered on the console, in order.
    static const std::array<MarkColor, 6>& presets()
    {
        static const std::array<MarkColor, 6> palette{{
            {1.0, 0.16, 0.12},
            {1.0, 0.55, 0.12},
            {1.0, 0.84, 0.12},
            {0.22, 0.82, 0.38},
            {0.18, 0.72, 0.96},
            {0.96, 0.96, 0.98},
        }};
        return palette;
    }
};

// The palette is listed by value, so colours hash.
inline size_t qHash(const MarkColor& c, size_t seed = 0) noexcept
{
    return qHashMulti(seed, c.red, c.green, c.blue);
}

template <>
struct std::hash<MarkColor> {
    size_t operator()(const MarkColor& c) const noexcept { return qHash(c); }
};

namespace AnnotationUndoRecord {
struct AddedStroke {
    QString pageKey;
    QUuid id;
    bool operator==(const AddedStroke&) const = default;
};
struct AddedFrame {
    QString pageKey;
    QUuid id;
    bool operator==(const AddedFrame&) const = default;
};
struct Cleared {
    QString pageKey;
    std::vector<Stroke> strokes;
    std::vector<FrameRect> frames;
    bool operator==(const Cleared&) const = default;
};
}

using AnnotationUndo = std::variant<AnnotationUndoRecord::AddedStroke, AnnotationUndoRecord::AddedFrame,
                                    AnnotationUndoRecord::Cleared>;
