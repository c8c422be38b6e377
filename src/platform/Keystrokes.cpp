#include "Keystrokes.h"

namespace {

Keystrokes *replacement = nullptr;

} // namespace

Keystrokes &Keystrokes::current()
{
    return replacement ? *replacement : platform();
}

void Keystrokes::setCurrent(Keystrokes *keystrokes)
{
    replacement = keystrokes;
}
