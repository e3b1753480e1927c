#pragma once

#include "input/EventSnapshot.h"

#include <QString>

#include <cstdint>
#include <optional>

// What one input means to the presenter, before looking at the model.
enum class ClickerAction {
    none,
    nextSlide,
    previousSlide,
    enter,        // commit the typed number, or next slide when none
    escape,       // drop the typed number, else back to the pointer, else blackout
    firstPage,
    lastPage,
    eraseDigit,   // take back a typed digit; with none typed, the characters decide
    blackout,
    freeze,
    laser,
    marker,
    frame,
    zoom,
    clearMarks,
    undoMark,
    previousCue,
    nextCue,
};

// The presenter's key map: pure functions from an input to an action, the
// same for the remote and the console keyboard.
namespace ClickerKeyMap {

// The digit a key types, main row and keypad alike (layout-independent).
std::optional<QString> digit(uint16_t keyCode);
// Command, Control and repeats are not for the presenter.
bool isBlocked(const EventSnapshot& snapshot);
// Media keys and extra mouse buttons.
ClickerAction forMediaOrButton(const EventSnapshot& snapshot);
// By key code (digits excepted).
ClickerAction forKeyCode(uint16_t keyCode);
// By the characters, lower-cased.
ClickerAction forCharacters(const QString& chars);

// Snapshots as every source makes them: a media key becomes its flag.
EventSnapshot keyDown(uint16_t keyCode, const QString& chars, uint64_t flags, bool isRepeat);
// The number of a kernel button code (BTN_MIDDLE 2, BTN_SIDE 3, BTN_EXTRA 4,
// BTN_FORWARD 5, BTN_BACK 6), or -1 for the main buttons and anything else.
int buttonNumber(uint16_t buttonCode);
EventSnapshot buttonDown(int button, uint64_t flags);
// The modifier bit a kernel key code stands for, or 0.
uint64_t modifierOf(uint16_t keyCode);

}  // namespace ClickerKeyMap
