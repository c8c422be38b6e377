#pragma once

#include <QString>

namespace Clipboard {

// Clears the clipboard, then sets the text as plain text; nothing else.
void writeText(const QString &text);

} // namespace Clipboard
