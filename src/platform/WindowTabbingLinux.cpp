#include "WindowTabbing.h"

namespace WindowTabbing {

void turnOffAutomaticTabbing()
{
    // Linux desktops do not tab an app's windows together on their own.
}

} // namespace WindowTabbing
