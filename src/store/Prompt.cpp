#include "Prompt.h"

#include "AsciiText.h"

QString Prompt::fileName() const
{
    // The id ends in the file name; reading it there spares decoding the URL,
    // which the orderings do for every prompt they sort.
    if (id.size() > projectName.size() && id.startsWith(projectName) && id.at(projectName.size()) == u'/')
        return id.mid(projectName.size() + 1);
    const QString path = filePath();
    return path.mid(path.lastIndexOf(u'/') + 1);
}

QString Prompt::displayTitle() const
{
    const QString title = frontMatter.title.trimmed();
    return title.isEmpty() ? QStringLiteral("New prompt") : title;
}

namespace {

// Lower-cased UTF-8 of `text`. ASCII, the common case, is lowered byte by
// byte; anything else goes through the full Unicode lower-casing.
void appendLowered(QByteArray *out, const QString &text)
{
    if (!QtPrivate::isAscii(text)) {
        out->append(text.toLower().toUtf8());
        return;
    }
    const qsizetype start = out->size();
    out->resize(start + text.size());
    char *to = out->data() + start;
    for (const QChar c : text) {
        const char16_t u = c.unicode();
        *to++ = char(u >= u'A' && u <= u'Z' ? u + 32 : u);
    }
}

} // namespace

QByteArray Prompt::makeSearchText(const QString &displayTitle, const QString &body, const QStringList &tags)
{
    QByteArray text;
    text.reserve(displayTitle.size() + body.size() + 2 + tags.size() * 8);
    appendLowered(&text, displayTitle);
    text.append('\0');
    appendLowered(&text, body);
    for (const QString &tag : tags) {
        text.append('\0');
        appendLowered(&text, tag);
    }
    return text;
}

QByteArray Prompt::makeSearchText(const QString &displayTitle, QByteArrayView asciiBody, const QStringList &tags)
{
    QByteArray text;
    text.reserve(displayTitle.size() + asciiBody.size() + 2 + tags.size() * 8);
    appendLowered(&text, displayTitle);
    text.append('\0');
    const qsizetype start = text.size();
    text.resize(start + asciiBody.size());
    AsciiText::lowerInto(asciiBody.data(), text.data() + start, asciiBody.size());
    for (const QString &tag : tags) {
        text.append('\0');
        appendLowered(&text, tag);
    }
    return text;
}
