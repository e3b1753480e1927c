// Output geometry: the displays, the published frame size and the size at
// which slides are rendered.
#include "model/AppModel.h"

#include "l10n/L10n.h"
#include "platform/Screens.h"

#include <algorithm>
#include <cmath>

namespace {

int evenTowardZero(long long v)
{
    return static_cast<int>(v - (v % 2));
}

// Published frames are even, at least 2 × 2 and at most 2560 a side.
PixelSize clampPublished(long long w, long long h)
{
    const long long m = std::max(w, h);
    long long w2 = w;
    long long h2 = h;
    if (m > 2560) {
        const double s = 2560.0 / static_cast<double>(m);
        w2 = static_cast<long long>(std::trunc(s * static_cast<double>(w)));
        h2 = static_cast<long long>(std::trunc(s * static_cast<double>(h)));
    }
    return {std::max(evenTowardZero(w2), 2), std::max(evenTowardZero(h2), 2)};
}

}

void AppModel::refreshDisplays()
{
    if (!services_.screens)
        return;
    const auto mainId = services_.screens->mainDisplayId();
    std::vector<OutputDisplay> list;
    for (const PlatformScreen& screen : services_.screens->screens()) {
        if (!screen.displayId)
            continue;
        list.push_back(OutputDisplay{*screen.displayId, screen.name, screen.frame, screen.backingScale,
                                     mainId && *mainId == *screen.displayId});
    }
    displays.set(std::move(list));
    const auto selected = selectedDisplayID.peek();
    const auto& now = displays.peek();
    if (selected && std::any_of(now.begin(), now.end(), [&](const OutputDisplay& d) { return d.id == *selected; }))
        return;
    const auto preferred = preferredOutputDisplay();
    selectedDisplayID.set(preferred ? std::optional<uint32_t>(preferred->id) : std::nullopt);
}

std::optional<OutputDisplay> AppModel::preferredOutputDisplay() const
{
    const auto& list = displays();
    for (const auto& display : list)
        if (!display.isMain)
            return display;
    if (!list.empty())
        return list.front();
    return std::nullopt;
}

std::optional<OutputDisplay> AppModel::selectedDisplay() const
{
    const auto id = selectedDisplayID();
    if (!id)
        return preferredOutputDisplay();
    for (const auto& display : displays())
        if (display.id == *id)
            return display;
    return std::nullopt;
}

PixelSize AppModel::syphonPixelSize() const
{
    switch (aspect()) {
    case AspectMode::fillDisplay:
        if (const auto display = selectedDisplay()) {
            const auto w = static_cast<long long>(std::trunc(display->frame.width() * display->backingScale));
            const auto h = static_cast<long long>(std::trunc(display->frame.height() * display->backingScale));
            return clampPublished(w, h);
        }
        return {1920, 1080};
    case AspectMode::r16x9: return {1920, 1080};
    case AspectMode::r16x10: return {1920, 1200};
    case AspectMode::r4x3: return {1600, 1200};
    case AspectMode::r3x2: return {1920, 1280};
    case AspectMode::r3x4: return {1440, 1920};
    case AspectMode::r1x1: return {1080, 1080};
    case AspectMode::r9x16: return {1080, 1920};
    case AspectMode::custom: return clampPublished(customWidth(), customHeight());
    }
    return {1920, 1080};
}

QSizeF AppModel::snapshotSize() const
{
    const PixelSize published = syphonPixelSize();
    const QSizeF window = outputPixelSize();
    const int w = std::max({published.width, static_cast<int>(window.width()), 1920});
    const int h = std::max({published.height, static_cast<int>(window.height()), 1080});
    return QSizeF(w, h);
}

namespace {
// What the output and the stage share: fit, tools and markup of the page.
// It reads neither the fade nor blackout, so the stage does not follow them.
OutputFrameState markupState(const AppModel& model)
{
    OutputFrameState s;
    s.fit = model.contentFit();
    const StageTool tool = model.stageTool();
    if (tool == StageTool::laser)
        s.laserPoint = model.laserPoint();
    if (tool == StageTool::zoom) {
        s.zoomCenter = model.zoomCenter();
        s.zoomScale = model.zoomScale();
    }
    const QString key = model.pageKey();
    if (const auto it = model.strokesByPage().find(key); it != model.strokesByPage().end())
        s.strokes = it->second;
    if (const auto it = model.framesByPage().find(key); it != model.framesByPage().end())
        s.frames = it->second;
    s.draftStroke = model.draftStroke();
    s.draftFrame = model.draftFrameRect();
    const MarkColor colour = model.markColor();
    s.accentRed = colour.red;
    s.accentGreen = colour.green;
    s.accentBlue = colour.blue;
    return s;
}
}

OutputFrameState AppModel::outputFrameState() const
{
    OutputFrameState s = markupState(*this);
    s.incoming = incomingSlideImage();
    s.outgoing = outgoingSlideImage();
    s.progress = transitionProgress();
    s.isBlackout = isBlackout();
    return s;
}

OutputFrameState AppModel::stagePreviewState() const
{
    // The stage always shows the operator's page: never blacked out, never fading.
    OutputFrameState s = markupState(*this);
    s.incoming = previewSlideImage();
    return s;
}

bool AppModel::needsLiveOutput() const
{
    if (transitionProgress() < 0.999)
        return true;
    const StageTool tool = stageTool();
    if (tool == StageTool::laser)
        return true;
    if (draftStroke() || draftFrameRect())
        return true;
    return tool == StageTool::zoom && zoomCenter().has_value();
}

QString aspectModeTitle(AspectMode mode)
{
    switch (mode) {
    case AspectMode::fillDisplay: return L10n::t(QStringLiteral("aspect.fill"));
    case AspectMode::r16x9: return QStringLiteral("16:9");
    case AspectMode::r16x10: return QStringLiteral("16:10");
    case AspectMode::r4x3: return QStringLiteral("4:3");
    case AspectMode::r3x2: return QStringLiteral("3:2");
    case AspectMode::r3x4: return QStringLiteral("3:4");
    case AspectMode::r1x1: return QStringLiteral("1:1");
    case AspectMode::r9x16: return QStringLiteral("9:16");
    case AspectMode::custom: return L10n::t(QStringLiteral("aspect.custom"));
    }
    return {};
}

QString OutputDisplay::shortLabel() const
{
    const auto whole = [](double v) { return QString::number(static_cast<long long>(std::trunc(v))); };
    return name + QStringLiteral(" \u00B7 ") + whole(frame.width()) + QStringLiteral("\u00D7") + whole(frame.height());
}

QRectF AppModel::outputFrame(const QRectF& screen) const
{
    const double W = screen.width();
    const double H = screen.height();
    const AspectMode mode = aspect();
    if (mode == AspectMode::fillDisplay)
        return screen;
    double w = 0;
    double h = 0;
    if (mode == AspectMode::custom) {
        w = std::max(customWidth(), 320);
        h = std::max(customHeight(), 240);
    } else {
        static const std::map<AspectMode, double> ratios{
            {AspectMode::r16x9, 16.0 / 9.0}, {AspectMode::r16x10, 1.6}, {AspectMode::r4x3, 4.0 / 3.0},
            {AspectMode::r3x2, 1.5},         {AspectMode::r3x4, 0.75},  {AspectMode::r1x1, 1.0},
            {AspectMode::r9x16, 0.5625},
        };
        const double r = ratios.at(mode);
        const double a = W / std::max(H, 1.0);
        if (a > r) {
            h = H;
            w = H * r;
        } else {
            w = W;
            h = W / r;
        }
    }
    w = std::min(w, W);
    h = std::min(h, H);
    return QRectF(screen.center().x() - w / 2, screen.center().y() - h / 2, w, h);
}

void AppModel::setAspect(AspectMode mode)
{
    aspect.set(mode);
    persistPreferences();
}

void AppModel::setContentFit(ContentFit fit)
{
    contentFit.set(fit);
    persistPreferences();
}

void AppModel::setCustomSize(int width, int height)
{
    if (width >= 1)
        customWidth.set(width);
    if (height >= 1)
        customHeight.set(height);
    persistPreferences();
}

void AppModel::selectDisplay(uint32_t id)
{
    const auto& list = displays.peek();
    if (std::none_of(list.begin(), list.end(), [&](const OutputDisplay& d) { return d.id == id; }))
        return;
    selectedDisplayID.set(id);
    persistPreferences();
}

void AppModel::setOutputAlwaysOnTop(bool onTop)
{
    outputAlwaysOnTop.set(onTop);
    persistPreferences();
}

void AppModel::setHideOutputCursor(bool hide)
{
    hideOutputCursor.set(hide);
    persistPreferences();
}
