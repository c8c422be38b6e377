#pragma once

#include "FakeAccessibility.h"
#include "platform/Keystrokes.h"
#include "platform/Workspace.h"

#include <QElapsedTimer>
#include <QHash>
#include <QList>
#include <QStringList>
#include <QUrl>

#include <functional>
#include <vector>

// Recording stand-ins for the platform's workspace, accessibility and
// keystrokes, installed for as long as they live. One clock times them all,
// so tests can tell what happened when.
struct FakeClock
{
    FakeClock() { timer.start(); }
    qint64 now() const { return timer.elapsed(); }
    QElapsedTimer timer;
};

class FakeApplications final : public Workspace::Applications
{
public:
    explicit FakeApplications(const FakeClock &clock) : m_clock(clock) { setCurrent(this); }
    ~FakeApplications() override { setCurrent(nullptr); }

    QUrl urlForApplication(const QString &bundleIdentifier) override
    {
        lookedUp << bundleIdentifier;
        return installed.value(bundleIdentifier);
    }
    void openApplication(const QUrl &location, std::function<void()> completion) override
    {
        opened << location;
        completions.push_back(std::move(completion));
    }
    void openUrl(const QUrl &url) override
    {
        openedUrls << url;
        urlOpenedAt = m_clock.now();
    }

    bool isVeskFrontmost() const override { return veskFrontmost; }

    // Reports the oldest open as the system would, some time later.
    void complete()
    {
        std::function<void()> completion = completions.front();
        completions.erase(completions.begin());
        completedAt = m_clock.now();
        completion();
    }

    bool veskFrontmost = false; // the opened application or browser came forward
    QHash<QString, QUrl> installed; // bundle identifier → location
    QStringList lookedUp;
    QList<QUrl> opened;
    QList<QUrl> openedUrls;
    std::vector<std::function<void()>> completions;
    qint64 completedAt = -1;
    qint64 urlOpenedAt = -1;

private:
    const FakeClock &m_clock;
};

class FakeKeystrokes final : public Keystrokes
{
public:
    explicit FakeKeystrokes(const FakeClock &clock) : m_clock(clock) { setCurrent(this); }
    ~FakeKeystrokes() override { setCurrent(nullptr); }

    void postPaste() override { pastedAt << m_clock.now(); }

    QList<qint64> pastedAt;

private:
    const FakeClock &m_clock;
};
