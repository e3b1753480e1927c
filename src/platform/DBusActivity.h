#pragma once

#include "platform/Activity.h"

// Inhibits the screen saver and idle sleep over the session bus while the
// token is held; without a session bus or service it does nothing.
class DBusActivity final : public Activity {
public:
    std::shared_ptr<void> begin(const QString& reason) override;
};
