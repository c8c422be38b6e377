#include "SystemAppearance.h"

#import <AppKit/AppKit.h>

namespace SystemAppearance {

bool systemIsDark()
{
    NSString *style = [[NSUserDefaults standardUserDefaults] stringForKey:@"AppleInterfaceStyle"];
    return style != nil && [style isEqualToString:@"Dark"];
}

void apply(Scheme scheme)
{
    // Qt follows NSApp.appearance, so palettes and widgets switch with it.
    switch (scheme) {
    case Scheme::System:
        NSApp.appearance = nil;
        break;
    case Scheme::Light:
        NSApp.appearance = [NSAppearance appearanceNamed:NSAppearanceNameAqua];
        break;
    case Scheme::Dark:
        NSApp.appearance = [NSAppearance appearanceNamed:NSAppearanceNameDarkAqua];
        break;
    }
}

} // namespace SystemAppearance
