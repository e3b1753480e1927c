#include "Scheduler.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QTimer>

#include <cmath>

double QtScheduler::now() const
{
    return static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000.0;
}

void QtScheduler::after(double seconds, std::function<void()> work)
{
    const int ms = seconds <= 0 ? 0 : static_cast<int>(std::lround(seconds * 1000.0));
    // Precise timers: a 16 ms fade step must not drift to 20 ms.
    QTimer::singleShot(ms, Qt::PreciseTimer, QCoreApplication::instance(), std::move(work));
}
