#pragma once

class AppModel;

// Hears presenter remotes in and outside the program and drives the model.
// (Filled in by the clicker work.)
class ClickerMonitor {
public:
    virtual ~ClickerMonitor() = default;
};
