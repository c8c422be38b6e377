#pragma once

#include "platform/Accessibility.h"

// Stands in for the system's accessibility permission, so that no test shows
// the system's prompt or reads the real account's trust. Counts the requests.
class FakeAccessibility : public AccessibilityPermission
{
public:
    bool trusted = false;
    int requests = 0;

    bool isTrusted() const override { return trusted; }
    void requestTrust() override { ++requests; }
};
