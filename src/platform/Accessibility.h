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
