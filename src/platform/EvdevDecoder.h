#pragma once

#include "input/EventSnapshot.h"
#include "input/KeyPressTracker.h"

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

// Turns the bytes read from one evdev device into presses: key-downs (a held
// key's repeats marked as such), media keys and extra mouse buttons, with the
// modifiers held on that device. A record split across two reads is kept
// until it is whole; after the kernel dropped events, everything up to the
// next report is skipped and the held keys are forgotten.
class EvdevDecoder {
public:
    // The characters a key code types, ignoring modifiers.
    using Characters = std::function<QString(uint16_t keyCode)>;

    explicit EvdevDecoder(Characters characters = {});

    std::vector<EventSnapshot> feed(const void* data, std::size_t size);

private:
    void decode(uint16_t type, uint16_t code, int32_t value, std::vector<EventSnapshot>& out);

    Characters characters_;
    QByteArray pending_;
    KeyPressTracker keys_;
    bool dropped_ = false;
};
