#include "app/HandOverInbox.h"

#include <QThread>

namespace {
// How often held files look again whether the dialog has closed.
constexpr int retryMs = 100;
}

HandOverInbox::HandOverInbox(std::function<void(const QStringList&)> take, int mainLoopLevel, QObject* parent)
    : QObject(parent)
    , take_(std::move(take))
    , mainLoopLevel_(mainLoopLevel)
{
    retry_.setSingleShot(true);
    retry_.setInterval(retryMs);
    connect(&retry_, &QTimer::timeout, this, &HandOverInbox::deliver);
}

void HandOverInbox::receive(const QStringList& paths)
{
    pending_.push_back(paths);
    deliver();
}

void HandOverInbox::deliver()
{
    // Taking files can itself raise an alert, whose loop may bring more:
    // those wait in the queue behind the ones being taken.
    if (delivering_)
        return;
    if (QThread::currentThread()->loopLevel() > mainLoopLevel_) {
        if (!pending_.empty())
            retry_.start();
        return;
    }
    delivering_ = true;
    while (!pending_.empty()) {
        const QStringList paths = pending_.front();
        pending_.pop_front();
        take_(paths);
    }
    delivering_ = false;
}
