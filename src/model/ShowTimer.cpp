// The show timer: a stopwatch that starts itself with the first set.
#include "model/AppModel.h"
#include "model/TimeFormat.h"

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

QString TimeFormat::duration(double seconds)
{
    if (!std::isfinite(seconds) || seconds >= 9.2e18 || seconds <= -9.2e18)
        return QStringLiteral("0:00");
    const long long t = static_cast<long long>(std::trunc(seconds));
    const long long s = std::max(t, 0LL);
    const auto two = [](long long v) { return QString::number(v).rightJustified(2, u'0'); };
    if (t >= 3600)
        return QString::number(s / 3600) + u':' + two((s % 3600) / 60) + u':' + two(s % 60);
    return QString::number((s % 3600) / 60) + u':' + two(s % 60);
}
