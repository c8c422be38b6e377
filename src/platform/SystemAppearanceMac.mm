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
    NSString *wanted = nil; // nil follows the system
    switch (scheme) {
    case Scheme::System:
        break;
    case Scheme::Light:
        wanted = NSAppearanceNameAqua;
        break;
    case Scheme::Dark:
        wanted = NSAppearanceNameDarkAqua;
        break;
    }
    // This runs on every activation; setting the appearance, even to the one
    // in place, is a theme change for every window, so only a change is set.
    NSAppearance *current = NSApp.appearance;
    if (wanted == nil ? current == nil : [current.name isEqualToString:wanted])
        return;
    NSApp.appearance = wanted == nil ? nil : [NSAppearance appearanceNamed:wanted];
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
