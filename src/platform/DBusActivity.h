#pragma once

#include "platform/Activity.h"

#include <optional>

// Keeps the screen awake while the token is held: the session's screen-saver
// inhibit, else the desktop portal's where that is what answers, and on X11
// the X screen saver suspended as well. Without a session bus or a service it
// carries on without them.
class DBusActivity final : public Activity {
public:
    // The session bus, or (tests) the bus at `busAddress`.
    explicit DBusActivity(std::optional<QString> busAddress = std::nullopt);
    std::shared_ptr<void> begin(const QString& reason) override;

private:
    std::optional<QString> busAddress_;
};
