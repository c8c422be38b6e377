#include "PlatformTerms.h"

namespace PlatformTerms {

QString settingsName()
{
    return QStringLiteral("Settings");
}

} // namespace PlatformTerms
