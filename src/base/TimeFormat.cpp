#include "base/TimeFormat.h"

#include <algorithm>
#include <cmath>

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
