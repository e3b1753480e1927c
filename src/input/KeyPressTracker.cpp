#include "KeyPressTracker.h"

#include "input/ClickerKeyMap.h"

bool KeyPressTracker::press(uint16_t keyCode)
{
    return !down_.insert(keyCode).second;
}

void KeyPressTracker::release(uint16_t keyCode)
{
    down_.erase(keyCode);
}

uint64_t KeyPressTracker::flags() const
{
    uint64_t flags = 0;
    for (uint16_t code : down_)
        flags |= ClickerKeyMap::modifierOf(code);
    return flags;
}
