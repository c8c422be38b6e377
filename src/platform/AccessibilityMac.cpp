#include "Accessibility.h"

// Keep AssertMacros.h from defining check(), verify() and friends.
#define __ASSERT_MACROS_DEFINE_VERSIONS_WITHOUT_UNDERSCORES 0

#include <ApplicationServices/ApplicationServices.h>

namespace Accessibility {

bool isTrusted()
{
    return AXIsProcessTrusted();
}

void requestTrustIfNeeded()
{
    if (AXIsProcessTrusted())
        return;
    const void *keys[] = {kAXTrustedCheckOptionPrompt};
    const void *values[] = {kCFBooleanTrue};
    CFDictionaryRef options = CFDictionaryCreate(kCFAllocatorDefault, keys, values, 1,
                                                 &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    AXIsProcessTrustedWithOptions(options);
    CFRelease(options);
}

QString permissionNote()
{
    return QStringLiteral("macOS will ask for Accessibility permission the first time you enable it; grant it under "
                          "System Settings → Privacy & Security → Accessibility.");
}

} // namespace Accessibility
