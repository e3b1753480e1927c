#pragma once

#include <cstdint>
#include <set>

// Which keys of one device are down, for sources that see only raw presses:
// a press of a key already down is a repeat, and held modifier keys make the
// snapshot's flags.
class KeyPressTracker {
public:
    // A key went down; true when it was already down (an auto-repeat).
    bool press(uint16_t keyCode);
    void release(uint16_t keyCode);
    void reset() { down_.clear(); }
    // ClickerModifier bits of the modifier keys held now.
    uint64_t flags() const;

private:
    std::set<uint16_t> down_;
};
