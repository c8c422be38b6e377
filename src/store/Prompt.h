#pragma once

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

    friend bool operator==(const Prompt &, const Prompt &) = default;
};

// One project folder directly under the library root.
struct Project
{
    QString name;
    QUrl url;
    int promptCount = 0;

    QString path() const { return url.toLocalFile(); }

    friend bool operator==(const Project &, const Project &) = default;
};
