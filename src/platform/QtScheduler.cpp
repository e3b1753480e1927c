#include "QtScheduler.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QTimer>

#include <cmath>

double QtScheduler::now() const
{
    // Wall-clock time at the first call, then carried on by a monotonic
    // clock: a system clock set back or forward during a show (a time
    // server, a manual change) must neither stall a fade half-blended nor
    // make the show timer jump.
    static const double anchor = static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000.0;
    static const QElapsedTimer elapsed = [] {
        QElapsedTimer timer;
        timer.start();
        return timer;
    }();
    return anchor + static_cast<double>(elapsed.nsecsElapsed()) / 1e9;
}

void QtScheduler::after(double seconds, std::function<void()> work)
{
    const int ms = seconds <= 0 ? 0 : static_cast<int>(std::lround(seconds * 1000.0));
    // Precise timers: a 16 ms fade step must not drift to 20 ms.
    QTimer::singleShot(ms, Qt::PreciseTimer, QCoreApplication::instance(), std::move(work));
}
