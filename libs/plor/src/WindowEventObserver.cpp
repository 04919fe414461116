#include <plor/WindowEventObserver.h>

namespace plor {

namespace {
constexpr int kShiftBit = 1;
constexpr int kControlBit = 2;
constexpr int kAltBit = 4;
constexpr int kSuperBit = 8;
} // namespace

Modifiers Modifiers::FromBits(int bits)
{
    Modifiers mods;
    mods.shift = (bits & kShiftBit) != 0;
    mods.control = (bits & kControlBit) != 0;
    mods.alt = (bits & kAltBit) != 0;
    mods.super = (bits & kSuperBit) != 0;
    return mods;
}

int Modifiers::ToBits() const
{
    return (shift ? kShiftBit : 0) | (control ? kControlBit : 0) | (alt ? kAltBit : 0) |
           (super ? kSuperBit : 0);
}

} // namespace plor
