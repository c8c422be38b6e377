#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QUrl>

// The header fields of a prompt file. Absent keys leave the defaults.
struct PromptFrontMatter
{
    QString title;
    QStringList tags;
    QString model;
    bool pinned = false;

    friend bool operator==(const PromptFrontMatter &, const PromptFrontMatter &) = default;
};

// One prompt file, as read at the last reload.
struct Prompt
{
    QString id;          // "<project>/<file name>", unique within a library
    QString projectName;
    QUrl fileURL;
    PromptFrontMatter frontMatter;
    QString body;
    QDateTime modifiedAt;

    QString filePath() const { return fileURL.toLocalFile(); }
    QString fileName() const;

    // The title lists and the search show: trimmed, or "New prompt" when blank.
    QString displayTitle() const;

    // What the search looks through, made once when the library reads the
    // file: the display title, the body and each tag, lower-cased, as UTF-8,
    // separated by a NUL. Empty for prompts the library did not read (a
    // draft); derived from the fields above, so not part of equality.
    QByteArray searchText;
    static QByteArray makeSearchText(const QString &displayTitle, const QString &body, const QStringList &tags);
    // The same, with the body given as its UTF-8 bytes when they are ASCII
    // (as read from the file): lower-cased byte by byte, without the QString.
    static QByteArray makeSearchText(const QString &displayTitle, QByteArrayView asciiBody, const QStringList &tags);

    friend bool operator==(const Prompt &a, const Prompt &b)
    {
        return a.id == b.id && a.projectName == b.projectName && a.fileURL == b.fileURL
            && a.frontMatter == b.frontMatter && a.body == b.body && a.modifiedAt == b.modifiedAt;
    }
};

// Plain values of implicitly shared parts: lists may move them as bytes.
Q_DECLARE_TYPEINFO(PromptFrontMatter, Q_RELOCATABLE_TYPE);
Q_DECLARE_TYPEINFO(Prompt, Q_RELOCATABLE_TYPE);

// One project folder directly under the library root.
struct Project
{
    QString name;
    QUrl url;
    int promptCount = 0;

    QString path() const { return url.toLocalFile(); }

    friend bool operator==(const Project &, const Project &) = default;
};
