#include "EvdevDecoder.h"

#include "input/ClickerKeyMap.h"

#include <linux/input.h>

#include <cstring>

EvdevDecoder::EvdevDecoder(Characters characters)
    : characters_(std::move(characters))
{
}

std::vector<EventSnapshot> EvdevDecoder::feed(const void* data, std::size_t size)
{
    std::vector<EventSnapshot> out;
    pending_.append(static_cast<const char*>(data), static_cast<qsizetype>(size));
    constexpr qsizetype record = sizeof(input_event);
    qsizetype at = 0;
    for (; at + record <= pending_.size(); at += record) {
        input_event ev;
        std::memcpy(&ev, pending_.constData() + at, sizeof ev);
        decode(ev.type, ev.code, ev.value, out);
    }
    pending_.remove(0, at);
    return out;
}

void EvdevDecoder::decode(uint16_t type, uint16_t code, int32_t value, std::vector<EventSnapshot>& out)
{
    if (type == EV_SYN) {
        if (code == SYN_DROPPED) {
            dropped_ = true;
            keys_.reset();
        } else if (code == SYN_REPORT) {
            dropped_ = false;
        }
        return;
    }
    if (type != EV_KEY || dropped_)
        return;
    if (value == 0) {
        keys_.release(code);
        return;
    }
    // 1 is a press, 2 the kernel's auto-repeat; a press of a key already
    // down also counts as a repeat.
    const bool repeat = keys_.press(code) || value == 2;
    if (code >= BTN_MISC && code < KEY_OK) {
        const int button = ClickerKeyMap::buttonNumber(code);
        if (button >= 2 && !repeat)
            out.push_back(ClickerKeyMap::buttonDown(button, keys_.flags()));
        return;
    }
    if (ClickerKeyMap::modifierOf(code))
        return;
    out.push_back(ClickerKeyMap::keyDown(code, characters_ ? characters_(code) : QString(), keys_.flags(), repeat));
}
