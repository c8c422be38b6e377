#include "DemoLibrary.h"

#include "PromptLibrary.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

namespace {

struct DemoPrompt
{
    const char *path;
    const char *text;
    int minutesAgo;
};

const DemoPrompt prompts[] = {
    {"Code Review/review-pr.md",
     "---\ntitle: Review a pull request\ntags: [code, review]\npinned: true\n---\n\n"
     "Review this {{language}} change for {{audience}}. Point out bugs first, then risky patterns, then style.\n"
     "Quote the lines you mean and suggest a fix for each.\n\n```\n{{diff}}\n```\n",
     30},
    {"Writing/tighten.md",
     "---\ntitle: Tighten a paragraph\ntags: [writing]\npinned: true\n---\n\n"
     "Rewrite the text below so that it says the same in half the words. Keep the author's voice.\n",
     90},
    {"Inbox/standup.md",
     "---\ntitle: Stand-up summary\n---\n\nSummarise yesterday's commits as three bullet points for the team stand-up.\n",
     5},
    {"Inbox/untitled.md", "---\ntitle: \n---\n\nExplain the difference between a mutex and a semaphore to a new hire.\n",
     12},
    {"Inbox/empty.md", "---\ntitle: \n---\n\n", 400},
    {"Code Review/tests.md",
     "---\ntitle: Write unit tests\ntags: [tests]\nmodel: claude-sonnet\n---\n\n"
     "Write unit tests for {{function}} that cover the edge cases: empty input, one element, duplicates.\n",
     60},
    {"Code Review/naming.md",
     "---\ntitle: Better names\n---\n\nSuggest clearer names for the variables and functions in this snippet.\n", 240},
    {"Writing/email.md",
     "---\ntitle: Release email\ntags: [email]\n---\n\nDraft a short email to {{team}} announcing the {{version}} "
     "release. Mention the three biggest changes and thank the contributors.\n",
     180},
    {"Research/paper.md",
     "---\ntitle: Summarise a paper\n---\n\nSummarise the attached paper in five bullet points, then list open "
     "questions.\n",
     600},
};

} // namespace

bool writeDemoLibrary(const QString &root)
{
    const QDateTime now = QDateTime::currentDateTimeUtc();
    for (const DemoPrompt &prompt : prompts) {
        const QString path = root + u'/' + QString::fromUtf8(prompt.path);
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            return false;
        file.write(prompt.text);
        file.flush();
        file.setFileTime(now.addSecs(-60 * prompt.minutesAgo), QFileDevice::FileModificationTime);
    }
    QDir().mkpath(root + u"/Ideas");
    PromptLibrary::writeOrderFile(root + u"/.vesk-sections-order",
                                  {QStringLiteral("@pinned"), QStringLiteral("Inbox"), QStringLiteral("Code Review")});
    return true;
}
