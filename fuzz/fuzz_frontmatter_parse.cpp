// Any text parses; what comes back is consistent with the text.
#include "FrontMatter.h"
#include "FuzzInput.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = FuzzInput::text(data, size);
    const FrontMatter::ParseResult parsed = FrontMatter::parse(text);
    // The body is always the end of the file as it stands.
    FuzzInput::check(text.endsWith(parsed.body), "body is a suffix of the text", text);
    if (!parsed.matter.isEmpty())
        FuzzInput::check(text.startsWith(u"---\n") || text.startsWith(u"---\r\n"), "header needs the delimiter", text);
    for (auto it = parsed.matter.cbegin(); it != parsed.matter.cend(); ++it) {
        FuzzInput::check(!it.key().isEmpty() && !it.key().contains(u'\n') && !it.value().contains(u'\n'),
                         "keys and values are single, non-empty-keyed lines", text);
        FuzzInput::check(trimSpacesAndTabs(it.key()) == it.key() && trimSpacesAndTabs(it.value()) == it.value(),
                         "keys and values are trimmed", text);
    }
    const PromptFrontMatter matter = FrontMatter::fromMatter(parsed.matter);
    FuzzInput::check(matter.title == parsed.matter.value(QStringLiteral("title")), "title is taken as written", text);
    return 0;
}
