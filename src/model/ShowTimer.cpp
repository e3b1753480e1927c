// The show timer: a stopwatch that starts itself with the first set.
#include "model/AppModel.h"

#include <algorithm>
#include <cmath>

namespace {
double nowFrom(const PlatformServices& services)
{
    return services.scheduler ? services.scheduler->now() : 0.0;
}
}

void AppModel::ensureTimerStarted()
{
    if (isTimerRunning.peek() || timerAccumulated.peek() != 0 || timerStartedAt.peek())
        return;
    isTimerRunning.set(true);
    timerStartedAt.set(nowFrom(services_));
}

void AppModel::toggleTimer()
{
    const double now = nowFrom(services_);
    if (!isTimerRunning.peek()) {
        timerStartedAt.set(now);
        isTimerRunning.set(true);
        return;
    }
    if (const auto started = timerStartedAt.peek())
        timerAccumulated.mutate([&](double& total) { total += now - *started; });
    timerStartedAt.set(std::nullopt);
    isTimerRunning.set(false);
}

void AppModel::resetTimer()
{
    timerAccumulated.set(0);
    if (isTimerRunning.peek())
        timerStartedAt.set(nowFrom(services_));
    else
        timerStartedAt.set(std::nullopt);
}

double AppModel::timerElapsed() const
{
    const double accumulated = timerAccumulated();
    if (const auto started = timerStartedAt())
        return accumulated + (nowFrom(services_) - *started);
    return accumulated;
}

std::optional<double> AppModel::timerRemaining() const
{
    const double planned = plannedDuration();
    if (planned <= 0)
        return std::nullopt;
    return std::max(planned - timerElapsed(), 0.0);
}

void AppModel::setPlannedDuration(double seconds)
{
    if (!std::isfinite(seconds))
        return;
    plannedDuration.set(seconds);
    persistPreferences();
}
