// The operations of PromptLibrary that change the prompt folder.

#include "PromptLibrary.h"

#include "FileOps.h"
#include "FrontMatter.h"
#include "VeskConst.h"
#include "platform/Trash.h"

#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QUuid>

#include <cerrno>

namespace {

void logFailure(const QString &line)
{
    qWarning().noquote() << line;
}

QString parentFolder(const QString &path)
{
    return QFileInfo(path).absolutePath();
}

// Past this many taken names something else is wrong; give up rather than spin.
constexpr int maxNumberedNames = 100000;

QString trimmedOfWhitespace(const QString &text)
{
    return text.trimmed();
}

} // namespace

QString PromptLibrary::sanitizeProjectName(const QString &name)
{
    QString sanitized = trimmedOfWhitespace(name);
    sanitized.replace(u'/', u'-').replace(u':', u'-').replace(u'\\', u'-');
    return sanitized.isEmpty() ? QStringLiteral("Untitled") : sanitized;
}

void PromptLibrary::save(const Prompt &prompt)
{
    const QString text = FrontMatter::serialize(prompt.frontMatter) + FrontMatter::bodyAfterHeader(prompt.body);

    QString error;
    if (!FileOps::writeTextAtomically(prompt.filePath(), text, &error))
        logFailure(u"Vesk: save failed for " + prompt.id + u": " + error);
    refresh({prompt.filePath()});
}

std::optional<Prompt> PromptLibrary::createPrompt(const Project &project)
{
    const QString fileName = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper() + u".md";
    const QString text = FrontMatter::serialize(PromptFrontMatter{}) + u'\n';

    const QString path = project.path() + u'/' + fileName;
    QString error;
    if (!FileOps::writeTextAtomically(path, text, &error)) {
        logFailure(u"Vesk: create failed: " + error);
        return std::nullopt;
    }
    refresh({path});
    return prompt(project.name + u'/' + fileName);
}

void PromptLibrary::deletePrompt(const Prompt &prompt)
{
    QString error;
    if (!Trash::moveToTrash(prompt.filePath(), &error))
        logFailure(u"Vesk: delete failed for " + prompt.id + u": " + error);
    refresh({prompt.filePath()});
}

std::optional<Project> PromptLibrary::createProject(const QString &name)
{
    const QString sanitized = sanitizeProjectName(name);
    const QString target = rootPath() + u'/' + sanitized;
    if (FileOps::entryExists(target))
        return project(sanitized);

    QString error;
    if (!FileOps::makeDirectory(target, &error)) {
        logFailure(u"Vesk: createProject failed: " + error);
        return std::nullopt;
    }
    refresh();
    return project(sanitized);
}

void PromptLibrary::deleteProject(const Project &project)
{
    QString error;
    if (!Trash::moveToTrash(project.path(), &error))
        logFailure(u"Vesk: deleteProject failed: " + error);
    refresh();
}

std::optional<Project> PromptLibrary::renameProject(const Project &project, const QString &newName)
{
    if (trimmedOfWhitespace(newName).isEmpty())
        return std::nullopt;
    if (project.name == VeskConst::inboxProjectName)
        return std::nullopt;
    const QString sanitized = sanitizeProjectName(newName);
    if (sanitized == project.name)
        return project;

    const QString target = parentFolder(project.path()) + u'/' + sanitized;
    if (FileOps::entryExists(target))
        return std::nullopt;

    // The check above answers the common case quietly; the rename itself
    // never replaces what another program put there meanwhile.
    QString error;
    const int result = FileOps::renameNoReplace(project.path(), target, &error);
    if (result == EEXIST)
        return std::nullopt;
    if (result != 0) {
        logFailure(u"Vesk: renameProject failed: " + error);
        return std::nullopt;
    }
    refresh();
    return this->project(sanitized);
}

std::optional<Prompt> PromptLibrary::movePrompt(const Prompt &prompt, const Project &target)
{
    if (prompt.projectName == target.name)
        return prompt;

    const QString fileName = prompt.fileName();
    // Numbered names always end in ".md", whatever the original extension.
    const QString stem = QFileInfo(fileName).completeBaseName();
    // Each candidate is claimed by a move that fails on an existing name, so
    // a prompt another process moved there meanwhile is never replaced.
    QString targetName = fileName;
    for (int counter = 2;; ++counter) {
        QString error;
        const int result = FileOps::moveFileNoReplace(prompt.filePath(), target.path() + u'/' + targetName, &error);
        if (result == 0)
            break;
        if (result != EEXIST || counter > maxNumberedNames) {
            logFailure(u"Vesk: move failed: " + (result == EEXIST ? FileOps::systemErrorText(EEXIST) : error));
            return std::nullopt;
        }
        targetName = stem + u' ' + QString::number(counter) + u".md";
    }
    refresh({prompt.filePath(), target.path() + u'/' + targetName});
    return this->prompt(target.name + u'/' + targetName);
}
