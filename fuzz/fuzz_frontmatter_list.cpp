// Inline lists: items are trimmed, non-empty and free of commas.
#include "FrontMatter.h"
#include "FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString value = FuzzInput::text(data, size);
    const QStringList items = FrontMatter::parseList(value);
    qsizetype letters = 0;
    for (const QString &item : items) {
        FuzzInput::check(!item.isEmpty() && !item.contains(u','), "items are non-empty, without commas", value);
        FuzzInput::check(trimSpacesAndTabs(item) == item, "items are trimmed", value);
        FuzzInput::check(value.contains(item), "items come from the value", value);
        letters += item.size();
    }
    FuzzInput::check(letters <= value.size(), "items are no longer than the value", value);
    return 0;
}
