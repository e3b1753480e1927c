#pragma once

#include <QObject>
#include <QStringList>
#include <QTimer>

#include <deque>
#include <functional>

// Files handed over by another launch arrive whenever the socket is read,
// also while an alert or a panel runs its own event loop in the middle of an
// operation (a set being opened, a show being read). Taken there, they would
// be lost when that operation goes on and replaces the set. The inbox keeps
// them until control is back in the main loop and passes them on in the
// order they came.
class HandOverInbox : public QObject {
    Q_OBJECT

public:
    // `mainLoopLevel`: the event-loop depth of the program's main loop (1
    // under QApplication::exec).
    HandOverInbox(std::function<void(const QStringList&)> take, int mainLoopLevel, QObject* parent = nullptr);

    void receive(const QStringList& paths);
    bool isHolding() const { return !pending_.empty(); }

private:
    void deliver();

    std::function<void(const QStringList&)> take_;
    int mainLoopLevel_;
    std::deque<QStringList> pending_;
    bool delivering_ = false;
    QTimer retry_;
};
