#include "SystemAppearance.h"

#include <QObject>

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

void watch(QObject *context, std::function<void()> onChange)
{
    // The system posts this when the user switches between light and dark.
    NSDistributedNotificationCenter *center = [NSDistributedNotificationCenter defaultCenter];
    id observer = [center addObserverForName:@"AppleInterfaceThemeChangedNotification"
                                      object:nil
                                       queue:[NSOperationQueue mainQueue]
                                  usingBlock:^(NSNotification *notification) {
                                      (void)notification;
                                      onChange();
                                  }];
    QObject::connect(context, &QObject::destroyed,
                     [observer] { [[NSDistributedNotificationCenter defaultCenter] removeObserver:observer]; });
}

} // namespace SystemAppearance
