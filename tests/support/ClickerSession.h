#pragma once

#include "input/ClickerKeyMap.h"
#include "input/ClickerMonitor.h"
#include "support/ModelFixtures.h"

#include <QStringList>

// A clicker monitor driving a test session, with where the focus is set by
// the test: by default a window of the program has the keyboard.
struct ClickerSession : ModelWithFolder {
    ClickerMonitor::Focus focus{true, true, false};
    // How many inputs from outside the program reached the monitor (each asks
    // once where the focus is).
    int heard = 0;
    ClickerMonitor monitor;

    explicit ClickerSession(ClickerMonitor::Sources sources = {})
        : monitor(std::move(sources))
    {
        monitor.setFocusProbe([this] {
            ++heard;
            return focus;
        });
    }
    // Another program is in front.
    void focusElsewhere() { focus = {false, false, false}; }

    bool key(uint16_t code, const QString& chars = {}, uint64_t flags = 0, ClickerSource source = ClickerSource::local,
             bool repeat = false)
    {
        return monitor.handle(ClickerKeyMap::keyDown(code, chars, flags, repeat), source);
    }
    bool button(int number, ClickerSource source = ClickerSource::local)
    {
        return monitor.handle(ClickerKeyMap::buttonDown(number, 0), source);
    }

    // What a press may change, in one line: "p<page> [buffer] tool black frozen".
    QString state() const
    {
        return QStringLiteral("p%1 [%2] %3%4%5")
            .arg(model.pageIndex())
            .arg(model.jumpBuffer(), stageTools.rawValue(model.stageTool()),
                 model.isBlackout() ? QStringLiteral(" black") : QString(),
                 model.isFrozen() ? QStringLiteral(" frozen") : QString());
    }
};
