// Order files: whatever lines are written read back trimmed, without repeats
// (a repeat would stop every later load), in their first order; any bytes
// read as an order file give trimmed, non-empty entries.
#include "FrontMatter.h"
#include "FuzzInput.h"
#include "PromptLibrary.h"

#include <QDir>
#include <QFile>
#include <QSet>

#include <unistd.h>

namespace {

QString scratchFile()
{
    static const QString path = QDir::tempPath() + u"/vesk-fuzz-order-" + QString::number(::getpid());
    return path;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString path = scratchFile();

    // Any bytes, read as an order file.
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            FuzzInput::fail("cannot write the scratch file");
        file.write(reinterpret_cast<const char *>(data), qint64(size));
    }
    for (const QString &entry : PromptLibrary::readOrderFile(path))
        FuzzInput::check(!entry.isEmpty() && trimSpacesAndTabs(entry) == entry, "entries are trimmed", entry);

    // Lines written by the app come back without repeats.
    const QStringList lines = FuzzInput::pieces(data, size);
    PromptLibrary::writeOrderFile(path, lines);
    const QStringList back = PromptLibrary::readOrderFile(path);
    FuzzInput::check(QSet<QString>(back.cbegin(), back.cend()).size() == back.size(), "no repeated entry",
                     back.join(u'|'));
    QStringList expected;
    for (const QString &line : lines) {
        const QString entry = trimSpacesAndTabs(line).toString();
        if (!entry.isEmpty() && !entry.contains(u'\n') && !entry.contains(u'\r') && !expected.contains(entry))
            expected.append(entry);
    }
    FuzzInput::check(back == expected, "written entries read back in order", back.join(u'|'));

    // Sorting by what was read is a permutation that puts listed items first.
    const QStringList items = lines.mid(0, 8);
    const QStringList sorted = PromptLibrary::sortByOrder(items, [](const QString &s) { return s; }, back);
    QStringList a = items, b = sorted;
    a.sort();
    b.sort();
    FuzzInput::check(a == b, "sorting keeps every item");
    return 0;
}
