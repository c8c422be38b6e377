#include "PlatformTerms.h"

namespace PlatformTerms {

QString settingsName()
{
    return QStringLiteral("Preferences");
}

} // namespace PlatformTerms
