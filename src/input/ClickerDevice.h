#pragma once

#include <QString>

// One input device the clicker sources hear, as the settings list it.
struct ClickerDevice {
    // Stable across runs and re-plugging (vendor, product and name, not the
    // device node), so the operator's choice survives a restart.
    QString id;
    // What the operator sees.
    QString name;
    // An ignored device is not heard by the sources outside the program.
    bool ignored = false;

    bool operator==(const ClickerDevice&) const = default;
};
