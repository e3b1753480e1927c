#pragma once

#include <QString>

#include <cstdint>

// Where an input was heard.
enum class ClickerSource {
    local,   // a window of this program has it (Qt event filter)
    global,  // the X11 session, while another program may have the focus
    tap,     // read from the input device itself (evdev)
};

// Modifier bits of `EventSnapshot::flags`.
namespace ClickerModifier {
inline constexpr uint64_t shift = 0x20000;
inline constexpr uint64_t control = 0x40000;
inline constexpr uint64_t option = 0x80000;  // Alt
inline constexpr uint64_t command = 0x100000;  // Super / Meta
inline constexpr uint64_t mask = 0xFFFF0000;
}

// A copy of one input, taken on the thread that heard it, so that it can be
// handed to the main thread. Key codes are the kernel's (input-event-codes.h)
// on every source.
struct EventSnapshot {
    uint16_t keyCode = 0;       // a key that went down; 0 for other inputs
    QString chars;              // its characters ignoring modifiers
    uint64_t flags = 0;         // ClickerModifier bits
    bool isRepeat = false;      // an auto-repeat of a held key
    int mouseButton = -1;       // extra mouse button number (2 middle, 3…6)
    bool isMediaNext = false;   // media next or fast-forward
    bool isMediaPrevious = false;  // media previous or rewind
    // The device it came from, for the operator's device filter (empty when
    // unknown), and its node when a source knows it (/dev/input/eventN).
    QString deviceID;
    QString deviceNode;

    bool operator==(const EventSnapshot&) const = default;
};
