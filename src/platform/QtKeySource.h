#pragma once

#include "platform/InputSource.h"

#include <optional>

class QKeyEvent;
class QMouseEvent;

// The in-program source: keys and extra mouse buttons in any window of this
// program, seen by an event filter on the application. A used input is
// swallowed, so no widget acts on it a second time.
class QtKeySource : public InputSource {
    Q_OBJECT
public:
    using InputSource::InputSource;
    ~QtKeySource() override;

    bool start(Deliver deliver) override;
    void stop() override;

    // The snapshot of a key press or extra mouse button, or none.
    static std::optional<EventSnapshot> snapshot(const QKeyEvent& event);
    static std::optional<EventSnapshot> snapshot(const QMouseEvent& event);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    Deliver deliver_;
    bool installed_ = false;
};
