#include "LibraryGenerator.h"

#include "FrontMatter.h"
#include "PromptLibrary.h"
#include "UtcTime.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QStringList>

namespace {

const QStringList &words()
{
    static const QStringList list = QStringLiteral(
        "review the following code and explain each change in plain language keep answers short "
        "refactor this function for clarity without changing behaviour write unit tests for edge "
        "cases summarise the document in five bullet points translate into formal English "
        "draft an email to the team about the release schedule list risks and mitigations "
        "act as a senior engineer suggest better names for variables and functions find bugs "
        "explain why the query is slow propose an index compare two approaches with a table "
        "rewrite the paragraph for a general audience avoid jargon use examples where helpful")
        .split(u' ');
    return list;
}

const QStringList projectNames{
    QStringLiteral("Code Review"), QStringLiteral("Writing"), QStringLiteral("Research"),
    QStringLiteral("Email"), QStringLiteral("Data"), QStringLiteral("Design"), QStringLiteral("Support"),
    QStringLiteral("Marketing"), QStringLiteral("Legal"), QStringLiteral("Planning"),
};

const QStringList tagPool{QStringLiteral("refactor"), QStringLiteral("tests"), QStringLiteral("email"),
                          QStringLiteral("summary"), QStringLiteral("sql"), QStringLiteral("draft"),
                          QStringLiteral("translate"), QStringLiteral("review")};

const QStringList variablePool{QStringLiteral("language"), QStringLiteral("audience"), QStringLiteral("topic"),
                               QStringLiteral("tone"), QStringLiteral("code")};

QString sentence(QRandomGenerator &rng, int wordCount)
{
    QStringList picked;
    for (int i = 0; i < wordCount; ++i)
        picked.append(words().at(rng.bounded(int(words().size()))));
    QString text = picked.join(u' ');
    text[0] = text[0].toUpper();
    return text;
}

QString body(QRandomGenerator &rng)
{
    const int target = 300 + rng.bounded(2700);
    QString text;
    while (text.size() < target) {
        text += sentence(rng, 8 + rng.bounded(12)) + u". ";
        if (rng.bounded(8) == 0)
            text += u"{{" + variablePool.at(rng.bounded(int(variablePool.size()))) + u"}} ";
        if (rng.bounded(5) == 0)
            text += u"\n\n";
    }
    return text.trimmed() + u'\n';
}

bool writeFile(const QString &path, const QString &text, const QDateTime &modified, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(text.toUtf8()) < 0 || !file.flush()) {
        *error = path + u": " + file.errorString();
        return false;
    }
    file.setFileTime(modified, QFileDevice::FileModificationTime);
    return true;
}

} // namespace

bool generateLibrary(const QString &root, const LibraryParameters &params, QString *error)
{
    QRandomGenerator rng(params.seed);
    const int projects = params.projectCount > 0 ? params.projectCount : std::max(4, params.promptCount / 250);
    QStringList names{QStringLiteral("Inbox")};
    for (int i = 1; i < projects; ++i) {
        const QString base = projectNames.at((i - 1) % projectNames.size());
        names.append(i <= projectNames.size() ? base : base + u' ' + QString::number(i));
    }
    for (const QString &name : std::as_const(names)) {
        if (!QDir().mkpath(root + u'/' + name)) {
            *error = u"cannot create " + root + u'/' + name;
            return false;
        }
    }

    const QDateTime newest = UtcTime::at(QDate(2026, 11, 1), QTime(9, 0));
    QHash<QString, QStringList> fileNamesByProject;
    QStringList pinnedIds;
    for (int i = 0; i < params.promptCount; ++i) {
        const QString project = names.at(rng.bounded(int(names.size())));
        const QString fileName = QStringLiteral("prompt-%1.md").arg(i, 5, 10, QLatin1Char('0'));
        PromptFrontMatter matter;
        matter.title = sentence(rng, 2 + rng.bounded(5));
        for (int t = rng.bounded(4); t > 0; --t)
            matter.tags.append(tagPool.at(rng.bounded(int(tagPool.size()))));
        if (rng.bounded(3) == 0)
            matter.model = rng.bounded(2) ? QStringLiteral("claude-sonnet") : QStringLiteral("gpt-4o");
        matter.pinned = rng.bounded(20) == 0;
        const QString text = FrontMatter::serialize(matter) + u'\n' + body(rng);
        if (!writeFile(root + u'/' + project + u'/' + fileName, text, newest.addSecs(-qint64(i) * 600), error))
            return false;
        fileNamesByProject[project].append(fileName);
        if (matter.pinned)
            pinnedIds.append(project + u'/' + fileName);
    }

    // Manual orders: reversed pinned ids, reversed sections, every other project.
    std::reverse(pinnedIds.begin(), pinnedIds.end());
    PromptLibrary::writeOrderFile(root + u"/.vesk-pinned-order", pinnedIds);
    QStringList sections = names;
    std::reverse(sections.begin(), sections.end());
    sections.insert(1, QStringLiteral("@pinned"));
    PromptLibrary::writeOrderFile(root + u"/.vesk-sections-order", sections);
    for (qsizetype i = 0; i < names.size(); i += 2) {
        QStringList order = fileNamesByProject.value(names[i]);
        std::reverse(order.begin(), order.end());
        PromptLibrary::writeOrderFile(root + u'/' + names[i] + u"/.vesk-order", order);
    }
    return true;
}
