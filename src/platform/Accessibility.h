#pragma once

#include <QString>

// The permission to send keystrokes to other applications.
namespace Accessibility {

bool isTrusted();
// Shows the system's permission prompt when the process is not trusted yet;
// where the platform has no such permission it does nothing.
void requestTrustIfNeeded();
// What the settings tell the user about the permission.
QString permissionNote();

} // namespace Accessibility

// The permission as the app's windows use it. They are given one, so that
// tests can hand them a fake and never reach the system's prompt or read the
// real account's trust.
class AccessibilityPermission
{
public:
    virtual ~AccessibilityPermission() = default;
    virtual bool isTrusted() const = 0;
    // Asks the system for the permission (its prompt, where it has one).
    virtual void requestTrust() = 0;
};

// The system's own permission.
class SystemAccessibility final : public AccessibilityPermission
{
public:
    bool isTrusted() const override { return Accessibility::isTrusted(); }
    void requestTrust() override { Accessibility::requestTrustIfNeeded(); }
};
