#pragma once

#include <QString>

// The permission to send keystrokes to other applications. The platform's
// answer comes from current(); tests put a stand-in there, so the system's
// permission prompt never appears during a test run.
class Accessibility
{
public:
    virtual ~Accessibility() = default;

    // Whether this process may send keystrokes to other applications now.
    virtual bool isTrusted() = 0;
    // Asks the system to show its permission prompt; where the platform has
    // no such permission it does nothing.
    virtual void promptForTrust() = 0;

    static Accessibility &current();
    // `replacement` answers from now on; nullptr restores the platform's.
    static void setCurrent(Accessibility *replacement);

    // What switching auto-paste on does: the prompt, unless already trusted.
    static void requestTrustIfNeeded();
    // What the settings tell the user about the permission.
    static QString permissionNote();

private:
    static Accessibility &platform();
};
