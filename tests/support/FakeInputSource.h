#pragma once

#include "platform/InputSource.h"

// An input source whose hearing, devices and nodes the test sets; it counts
// how often the monitor asked it to look again.
struct FakeInputSource : InputSource {
    bool hearing = false;
    int refreshes = 0;
    std::vector<ClickerDevice> list;
    QStringList nodes;  // device nodes it reads itself
    Deliver deliver;

    bool start(Deliver d) override
    {
        deliver = std::move(d);
        return true;
    }
    void stop() override { deliver = nullptr; }
    void refresh() override { ++refreshes; }
    bool hearsOutside() const override { return hearing; }
    std::vector<ClickerDevice> devices() const override { return list; }
    bool reads(const QString& node) const override { return nodes.contains(node); }
};
