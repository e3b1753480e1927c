#include "ClickerKeyMap.h"

#include <linux/input-event-codes.h>

#include <array>
#include <utility>

namespace ClickerKeyMap {

std::optional<QString> digit(uint16_t keyCode)
{
    // The main row runs 1…9 then 0; the keypad's codes are not in order.
    static constexpr std::array<std::pair<uint16_t, char>, 20> digits{{
        {KEY_1, '1'}, {KEY_2, '2'}, {KEY_3, '3'}, {KEY_4, '4'}, {KEY_5, '5'},
        {KEY_6, '6'}, {KEY_7, '7'}, {KEY_8, '8'}, {KEY_9, '9'}, {KEY_0, '0'},
        {KEY_KP1, '1'}, {KEY_KP2, '2'}, {KEY_KP3, '3'}, {KEY_KP4, '4'}, {KEY_KP5, '5'},
        {KEY_KP6, '6'}, {KEY_KP7, '7'}, {KEY_KP8, '8'}, {KEY_KP9, '9'}, {KEY_KP0, '0'},
    }};
    for (const auto& [code, ch] : digits)
        if (code == keyCode)
            return QString(QChar::fromLatin1(ch));
    return std::nullopt;
}

bool isBlocked(const EventSnapshot& snapshot)
{
    return (snapshot.flags & (ClickerModifier::command | ClickerModifier::control)) != 0 || snapshot.isRepeat;
}

ClickerAction forMediaOrButton(const EventSnapshot& snapshot)
{
    if (snapshot.isMediaNext)
        return ClickerAction::nextSlide;
    if (snapshot.isMediaPrevious)
        return ClickerAction::previousSlide;
    switch (snapshot.mouseButton) {
    case 3:
    case 4:
        return ClickerAction::nextSlide;
    case 5:
        return ClickerAction::previousSlide;
    default:
        return ClickerAction::none;
    }
}

ClickerAction forKeyCode(uint16_t keyCode)
{
    switch (keyCode) {
    case KEY_ENTER:
    case KEY_KPENTER:
        return ClickerAction::enter;
    case KEY_SPACE:
    case KEY_PAGEDOWN:
    case KEY_RIGHT:
    case KEY_DOWN:
        return ClickerAction::nextSlide;
    case KEY_BACKSPACE:
    case KEY_PAGEUP:
    case KEY_LEFT:
    case KEY_UP:
        return ClickerAction::previousSlide;
    case KEY_ESC:
        return ClickerAction::escape;
    case KEY_HOME:
        return ClickerAction::firstPage;
    case KEY_END:
        return ClickerAction::lastPage;
    case KEY_CLEAR:
    case KEY_DELETE:
        return ClickerAction::eraseDigit;
    default:
        return ClickerAction::none;
    }
}

ClickerAction forCharacters(const QString& chars)
{
    static constexpr std::array<std::pair<char16_t, ClickerAction>, 11> byCharacter{{
        {u'b', ClickerAction::blackout},
        {u'.', ClickerAction::blackout},
        {u'f', ClickerAction::freeze},
        {u'l', ClickerAction::laser},
        {u'm', ClickerAction::marker},
        {u'r', ClickerAction::frame},
        {u'z', ClickerAction::zoom},
        {u'c', ClickerAction::clearMarks},
        {u'u', ClickerAction::undoMark},
        {u'[', ClickerAction::previousCue},
        {u']', ClickerAction::nextCue},
    }};
    const QString c = chars.toLower();
    if (c.size() != 1)
        return ClickerAction::none;
    for (const auto& [ch, action] : byCharacter)
        if (c.front() == QChar(ch))
            return action;
    return ClickerAction::none;
}

EventSnapshot keyDown(uint16_t keyCode, const QString& chars, uint64_t flags, bool isRepeat)
{
    EventSnapshot s;
    s.flags = flags & ClickerModifier::mask;
    s.isRepeat = isRepeat;
    // Media keys carry no key code or characters, only their direction.
    if (keyCode == KEY_NEXTSONG || keyCode == KEY_FASTFORWARD) {
        s.isMediaNext = true;
    } else if (keyCode == KEY_PREVIOUSSONG || keyCode == KEY_REWIND) {
        s.isMediaPrevious = true;
    } else {
        s.keyCode = keyCode;
        s.chars = chars;
    }
    return s;
}

int buttonNumber(uint16_t buttonCode)
{
    switch (buttonCode) {
    case BTN_MIDDLE:
        return 2;
    case BTN_SIDE:
        return 3;
    case BTN_EXTRA:
        return 4;
    case BTN_FORWARD:
        return 5;
    case BTN_BACK:
        return 6;
    default:
        return -1;
    }
}

EventSnapshot buttonDown(int button, uint64_t flags)
{
    EventSnapshot s;
    s.flags = flags & ClickerModifier::mask;
    s.mouseButton = button;
    return s;
}

uint64_t modifierOf(uint16_t keyCode)
{
    switch (keyCode) {
    case KEY_LEFTSHIFT:
    case KEY_RIGHTSHIFT:
        return ClickerModifier::shift;
    case KEY_LEFTCTRL:
    case KEY_RIGHTCTRL:
        return ClickerModifier::control;
    case KEY_LEFTALT:
    case KEY_RIGHTALT:
        return ClickerModifier::option;
    case KEY_LEFTMETA:
    case KEY_RIGHTMETA:
        return ClickerModifier::command;
    default:
        return 0;
    }
}

}  // namespace ClickerKeyMap
