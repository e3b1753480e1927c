#pragma once

#include <QString>

#include <memory>

// Keeps the machine awake and responsive while a show runs. The activity
// lasts as long as the returned token is held.
class Activity {
public:
    virtual ~Activity() = default;
    virtual std::shared_ptr<void> begin(const QString& reason) = 0;
};
