// What the writer writes, the reader reads back: the body exactly, pinned and
// clean tags exactly, and titles and models either as written or, when they
// need quoting, with one more layer of quotes (each save adds one; that
// layering is how the format behaves).
#include "FrontMatter.h"
#include "FuzzInput.h"

namespace {

bool needsQuotes(const QString &scalar)
{
    return scalar.contains(u':') || scalar.contains(u'"') || scalar.startsWith(u'-') || scalar.startsWith(u'[')
        || scalar.startsWith(u'{') || scalar.startsWith(u'#');
}

QString expectedScalar(const QString &scalar)
{
    if (!needsQuotes(scalar))
        return trimSpacesAndTabs(scalar).toString();
    QString escaped = scalar;
    escaped.replace(u'"', QStringLiteral("\\\""));
    return u'"' + escaped + u'"';
}

// Line breaks cannot be in a header line; the editor turns them into spaces.
QString oneLine(QString text)
{
    text.replace(u'\r', u' ').replace(u'\n', u' ');
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QStringList parts = FuzzInput::pieces(data, size);
    PromptFrontMatter matter;
    matter.title = oneLine(parts.value(0));
    matter.model = oneLine(parts.value(1));
    matter.pinned = parts.value(2).size() % 2 == 1;
    for (const QString &tag : parts.value(3).split(u';')) {
        const QString clean = trimSpacesAndTabs(oneLine(tag).remove(u',')).toString();
        if (!clean.isEmpty())
            matter.tags.append(clean);
    }
    const QString body = parts.value(4);

    // The writer's layout: the header, one blank line, the body without the
    // one leading line feed that stands for that blank line.
    const QString stored = body.startsWith(u'\n') ? body.mid(1) : body;
    const QString file = FrontMatter::serialize(matter) + u'\n' + stored;
    const FrontMatter::ParseResult parsed = FrontMatter::parse(file);
    const PromptFrontMatter back = FrontMatter::fromMatter(parsed.matter);

    FuzzInput::check(parsed.body == u'\n' + stored, "body round trip", file);
    FuzzInput::check(back.pinned == matter.pinned, "pinned round trip", file);
    FuzzInput::check(back.title == expectedScalar(matter.title), "title round trip", file);
    FuzzInput::check(back.model == expectedScalar(matter.model), "model round trip", file);
    FuzzInput::check(back.tags == matter.tags, "tags round trip", file);
    return 0;
}
