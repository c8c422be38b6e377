#include "WindowTabbing.h"

#import <AppKit/AppKit.h>

namespace WindowTabbing {

void turnOffAutomaticTabbing()
{
    [NSWindow setAllowsAutomaticWindowTabbing:NO];
}

} // namespace WindowTabbing
