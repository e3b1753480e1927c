#pragma once

#include <QRectF>
#include <QString>

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

// The connected displays as the platform lists them.
struct PlatformScreen {
    std::optional<uint32_t> displayId;  // absent when no stable identifier can be made
    QString name;
    QRectF frame;                       // device-independent pixels, global coordinates
    double backingScale = 1.0;
};

class Screens {
public:
    virtual ~Screens() = default;
    virtual std::vector<PlatformScreen> screens() const = 0;
    virtual std::optional<uint32_t> mainDisplayId() const = 0;
    // Called on the main thread when screens are added, removed or change geometry.
    virtual void setChangeHandler(std::function<void()> handler) = 0;
};
