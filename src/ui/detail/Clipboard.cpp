#include "Clipboard.h"

#include <QClipboard>
#include <QGuiApplication>

namespace Clipboard {

void writeText(const QString &text)
{
    QClipboard *clipboard = QGuiApplication::clipboard();
    clipboard->clear();
    clipboard->setText(text);
}

} // namespace Clipboard
