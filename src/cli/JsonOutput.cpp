#include "JsonOutput.h"

#include <QJsonDocument>

#include <chrono>
#include <cstdio>
#include <cstring>

namespace JsonOutput {

QJsonObject promptObject(const Prompt &prompt)
{
    return QJsonObject{
        {QStringLiteral("id"), prompt.id},
        {QStringLiteral("project"), prompt.projectName},
        {QStringLiteral("file"), prompt.filePath()},
        {QStringLiteral("title"), prompt.frontMatter.title},
        {QStringLiteral("displayTitle"), prompt.displayTitle()},
        {QStringLiteral("tags"), stringArray(prompt.frontMatter.tags)},
        {QStringLiteral("model"), prompt.frontMatter.model},
        {QStringLiteral("pinned"), prompt.frontMatter.pinned},
        {QStringLiteral("body"), prompt.body},
        {QStringLiteral("modifiedAt"), prompt.modifiedAt.toUTC().toString(Qt::ISODateWithMs)},
    };
}

QJsonObject projectObject(const Project &project)
{
    return QJsonObject{
        {QStringLiteral("name"), project.name},
        {QStringLiteral("path"), project.path()},
        {QStringLiteral("promptCount"), project.promptCount},
    };
}

QJsonArray promptArray(const QList<Prompt> &prompts)
{
    QJsonArray array;
    for (const Prompt &prompt : prompts)
        array.append(promptObject(prompt));
    return array;
}

QJsonArray stringArray(const QStringList &strings)
{
    return QJsonArray::fromStringList(strings);
}

QByteArray text(const QJsonValue &value)
{
    if (value.isArray())
        return QJsonDocument(value.toArray()).toJson(QJsonDocument::Compact) + '\n';
    if (value.isObject())
        return QJsonDocument(value.toObject()).toJson(QJsonDocument::Compact) + '\n';
    // QJsonDocument holds only arrays and objects: wrap the scalar and unwrap it.
    const QByteArray wrapped = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
    return wrapped.mid(1, wrapped.size() - 2) + '\n';
}

namespace {

constexpr quint64 everyByte(uchar b)
{
    return 0x0101010101010101ULL * b;
}

// Whether any byte of the word must be escaped: a control character, a
// quote or a backslash (bytes from 0x80 up never are).
bool needsEscape(quint64 word)
{
    constexpr quint64 high = everyByte(0x80);
    const quint64 control = (word - everyByte(0x20)) & ~word & high;
    const quint64 quote = word ^ everyByte('"');
    const quint64 backslash = word ^ everyByte('\\');
    return (control | ((quote - everyByte(1)) & ~quote & high) | ((backslash - everyByte(1)) & ~backslash & high)) != 0;
}

// The body of a JSON string as Qt's writer spells it: quote, backslash and
// control characters escaped (the short forms where JSON has them), all else
// as the UTF-8 it is.
void appendEscaped(QByteArray *out, QByteArrayView utf8)
{
    static constexpr char hex[] = "0123456789abcdef";
    const char *data = utf8.data();
    const qsizetype size = utf8.size();
    qsizetype plainFrom = 0;
    qsizetype i = 0;
    while (i < size) {
        // Eight plain bytes at a time, the common case.
        if (i + 8 <= size) {
            quint64 word;
            std::memcpy(&word, data + i, 8);
            if (!needsEscape(word)) {
                i += 8;
                continue;
            }
        }
        const uchar c = uchar(data[i]);
        if (c >= 0x20 && c != '"' && c != '\\') {
            ++i;
            continue;
        }
        out->append(data + plainFrom, i - plainFrom);
        plainFrom = ++i;
        out->append('\\');
        switch (c) {
        case '"': out->append('"'); break;
        case '\\': out->append('\\'); break;
        case '\b': out->append('b'); break;
        case '\f': out->append('f'); break;
        case '\n': out->append('n'); break;
        case '\r': out->append('r'); break;
        case '\t': out->append('t'); break;
        default:
            out->append("u00");
            out->append(hex[c >> 4]);
            out->append(hex[c & 15]);
        }
    }
    out->append(data + plainFrom, size - plainFrom);
}

void appendString(QByteArray *out, QByteArrayView utf8)
{
    out->append('"');
    appendEscaped(out, utf8);
    out->append('"');
}

void appendString(QByteArray *out, QStringView text)
{
    // Mostly ASCII: narrowed in place of a UTF-8 conversion and its allocation.
    if (QtPrivate::isAscii(text)) {
        thread_local QByteArray narrow;
        narrow.resize(text.size());
        char *to = narrow.data();
        for (const QChar c : text)
            *to++ = char(c.unicode());
        appendString(out, QByteArrayView(narrow));
        return;
    }
    appendString(out, QByteArrayView(text.toUtf8()));
}

// An instant as Qt's ISODateWithMs writes it in UTC ("2026-01-01T12:00:00.000Z"),
// without building a QDateTime's string; other years go to Qt.
void appendTime(QByteArray *out, const QDateTime &time)
{
    using namespace std::chrono;
    const qint64 ms = time.isValid() ? time.toMSecsSinceEpoch() : 0;
    const sys_days day = floor<days>(sys_time<milliseconds>(milliseconds(ms)));
    const year_month_day date(day);
    const int y = int(date.year());
    if (!time.isValid() || y < 1000 || y > 9999) {
        appendString(out, time.toUTC().toString(Qt::ISODateWithMs));
        return;
    }
    const qint64 inDay = ms - duration_cast<milliseconds>(day.time_since_epoch()).count();
    char text[48];
    std::snprintf(text, sizeof text, "\"%04d-%02u-%02uT%02d:%02d:%02d.%03dZ\"", y, unsigned(date.month()),
                  unsigned(date.day()), int(inDay / 3600000), int(inDay / 60000 % 60), int(inDay / 1000 % 60),
                  int(inDay % 1000));
    out->append(text, 26);
}

void appendKey(QByteArray *out, const char *key)
{
    out->append('"').append(key).append("\":");
}

// promptObject(prompt) as compact JSON, its body written by `appendBody`.
template<typename AppendBody>
void appendPromptWith(QByteArray *out, const Prompt &prompt, AppendBody appendBody)
{
    // The keys in the order QJsonObject keeps them: sorted.
    out->append('{');
    appendKey(out, "body");
    appendBody();
    out->append(',');
    appendKey(out, "displayTitle");
    appendString(out, prompt.displayTitle());
    out->append(',');
    appendKey(out, "file");
    appendString(out, prompt.filePath());
    out->append(',');
    appendKey(out, "id");
    appendString(out, prompt.id);
    out->append(',');
    appendKey(out, "model");
    appendString(out, prompt.frontMatter.model);
    out->append(',');
    appendKey(out, "modifiedAt");
    appendTime(out, prompt.modifiedAt);
    out->append(',');
    appendKey(out, "pinned");
    out->append(prompt.frontMatter.pinned ? "true" : "false");
    out->append(',');
    appendKey(out, "project");
    appendString(out, prompt.projectName);
    out->append(',');
    appendKey(out, "tags");
    out->append('[');
    for (qsizetype i = 0; i < prompt.frontMatter.tags.size(); ++i) {
        if (i > 0)
            out->append(',');
        appendString(out, prompt.frontMatter.tags[i]);
    }
    out->append("],");
    appendKey(out, "title");
    appendString(out, prompt.frontMatter.title);
    out->append('}');
}

} // namespace

void appendPrompt(QByteArray *out, const Prompt &prompt)
{
    appendPromptWith(out, prompt, [&] { appendString(out, prompt.body); });
}

void appendPrompt(QByteArray *out, const Prompt &prompt, QByteArrayView utf8Body)
{
    out->reserve(out->size() + utf8Body.size() + 512);
    appendPromptWith(out, prompt, [&] { appendString(out, utf8Body); });
}

} // namespace JsonOutput
