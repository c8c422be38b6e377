#include "HandoffApp.h"

#include <QHashFunctions>

const HandoffApp HandoffApp::claude(HandoffApp::Case::Claude);
const HandoffApp HandoffApp::chatgpt(HandoffApp::Case::ChatGPT);

QList<HandoffApp> HandoffApp::allCases()
{
    return {claude, chatgpt};
}

std::optional<HandoffApp> HandoffApp::fromRawValue(QStringView rawValue)
{
    for (const HandoffApp &app : allCases()) {
        if (app.rawValue() == rawValue)
            return app;
    }
    return std::nullopt;
}

HandoffApp HandoffApp::fromPreference(QStringView stored)
{
    return stored == u"chatgpt" ? chatgpt : claude;
}

QString HandoffApp::rawValue() const
{
    return m_case == Case::ChatGPT ? QStringLiteral("chatgpt") : QStringLiteral("claude");
}

QString HandoffApp::displayName() const
{
    return m_case == Case::ChatGPT ? QStringLiteral("ChatGPT") : QStringLiteral("Claude");
}

QString HandoffApp::bundleIdentifier() const
{
    return m_case == Case::ChatGPT ? QStringLiteral("com.openai.chat") : QStringLiteral("com.anthropic.claudefordesktop");
}

QUrl HandoffApp::webFallbackURL() const
{
    const QUrl url(m_case == Case::ChatGPT ? QStringLiteral("https://chatgpt.com/") : QStringLiteral("https://claude.ai/"),
                   QUrl::StrictMode);
    Q_ASSERT(url.isValid()); // fixed addresses: a typo here is a programming error
    return url;
}

size_t qHash(const HandoffApp &app, size_t seed) noexcept
{
    return qHash(static_cast<int>(app.m_case), seed);
}
