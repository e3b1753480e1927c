#pragma once

#include <QString>

#include <optional>

// The settings a show carries (the output's shape, the fade, the planned
// length, the output cursor and the mark colour) in their coded form: enums
// as raw values, sizes as whole numbers. Show files and the preferences keep
// them under the same keys, listed once in `forEach`. A value may be absent
// (a preference never written); the model takes only usable ones
// (AppModel::applyShowSettings).
struct ShowSettings {
    std::optional<QString> aspect;
    std::optional<QString> contentFit;
    std::optional<qint64> customWidth;
    std::optional<qint64> customHeight;
    std::optional<QString> transitionStyle;
    std::optional<double> transitionDuration;
    std::optional<double> plannedDuration;
    std::optional<bool> hideOutputCursor;
    std::optional<double> markRed;
    std::optional<double> markGreen;
    std::optional<double> markBlue;

    bool operator==(const ShowSettings&) const = default;

    // Calls `visit(key, value)` for every setting, `value` being the member.
    template <typename Settings, typename Visit>
    static void forEach(Settings& s, Visit&& visit)
    {
        visit("aspect", s.aspect);
        visit("contentFit", s.contentFit);
        visit("customWidth", s.customWidth);
        visit("customHeight", s.customHeight);
        visit("transitionStyle", s.transitionStyle);
        visit("transitionDuration", s.transitionDuration);
        visit("plannedDuration", s.plannedDuration);
        visit("hideOutputCursor", s.hideOutputCursor);
        visit("markRed", s.markRed);
        visit("markGreen", s.markGreen);
        visit("markBlue", s.markBlue);
    }
};
