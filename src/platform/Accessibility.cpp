#include "Accessibility.h"

namespace {

Accessibility *replacement = nullptr;

} // namespace

Accessibility &Accessibility::current()
{
    return replacement ? *replacement : platform();
}

void Accessibility::setCurrent(Accessibility *accessibility)
{
    replacement = accessibility;
}

void Accessibility::requestTrustIfNeeded()
{
    Accessibility &accessibility = current();
    if (!accessibility.isTrusted())
        accessibility.promptForTrust();
}
