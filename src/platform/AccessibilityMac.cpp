#include "Accessibility.h"

// Keep AssertMacros.h from defining check(), verify() and friends.
#define __ASSERT_MACROS_DEFINE_VERSIONS_WITHOUT_UNDERSCORES 0

#include <ApplicationServices/ApplicationServices.h>

namespace {

class MacAccessibility final : public Accessibility
{
public:
    bool isTrusted() override { return AXIsProcessTrusted(); }

    void promptForTrust() override
    {
        const void *keys[] = {kAXTrustedCheckOptionPrompt};
        const void *values[] = {kCFBooleanTrue};
        CFDictionaryRef options = CFDictionaryCreate(kCFAllocatorDefault, keys, values, 1,
                                                     &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
        AXIsProcessTrustedWithOptions(options);
        CFRelease(options);
    }
};

} // namespace

Accessibility &Accessibility::platform()
{
    static MacAccessibility accessibility;
    return accessibility;
}

QString Accessibility::permissionNote()
{
    return QStringLiteral("macOS will ask for Accessibility permission the first time you enable it; grant it under "
                          "System Settings → Privacy & Security → Accessibility.");
}
