#include "SystemAppearance.h"

#include <QObject>

#import <AppKit/AppKit.h>

#include <utility>

// Receives the system's light/dark switch and passes it on. (Manual retain
// and release: the project builds Objective-C++ without ARC.)
@interface VeskAppearanceObserver : NSObject
- (instancetype)initWithHandler:(std::function<void()>)handler;
- (void)interfaceThemeChanged:(NSNotification *)notification;
@end

@implementation VeskAppearanceObserver {
    std::function<void()> _handler;
}

- (instancetype)initWithHandler:(std::function<void()>)handler
{
    if ((self = [super init]))
        _handler = std::move(handler);
    return self;
}

- (void)interfaceThemeChanged:(NSNotification *)notification
{
    (void)notification;
    _handler();
}
@end

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
    // AppKit suspends distributed notifications while the app is not
    // active, and the block-based registration coalesces them until it is
    // again; "opposite" must follow the switch while Vesk is in the
    // background, so this one is delivered at once. Distributed
    // notifications arrive on the main thread.
    VeskAppearanceObserver *observer = [[VeskAppearanceObserver alloc] initWithHandler:std::move(onChange)];
    [[NSDistributedNotificationCenter defaultCenter] addObserver:observer
                                                        selector:@selector(interfaceThemeChanged:)
                                                            name:@"AppleInterfaceThemeChangedNotification"
                                                          object:nil
                                              suspensionBehavior:NSNotificationSuspensionBehaviorDeliverImmediately];
    QObject::connect(context, &QObject::destroyed, [observer] {
        [[NSDistributedNotificationCenter defaultCenter] removeObserver:observer];
        [observer release];
    });
}

} // namespace SystemAppearance
