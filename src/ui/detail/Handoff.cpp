#include "Handoff.h"

#include "AutoPaste.h"
#include "HandoffApp.h"
#include "platform/Workspace.h"

namespace Handoff {

void activate(const HandoffApp &app, bool autoPaste)
{
    const auto pasteStep = [autoPaste] {
        if (autoPaste)
            AutoPaste::send(pasteDelay); // untrusted: the prompt waits on the clipboard
    };
    Workspace::Applications &workspace = Workspace::Applications::current();
    const QUrl location = workspace.urlForApplication(app.bundleIdentifier());
    if (location.isEmpty()) {
        workspace.openUrl(app.webFallbackURL());
        pasteStep();
        return;
    }
    workspace.openApplication(location, pasteStep);
}

} // namespace Handoff
