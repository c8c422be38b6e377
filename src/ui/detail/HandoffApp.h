#pragma once

#include <QList>
#include <QString>
#include <QUrl>

#include <optional>

// An assistant the hand-off can bring to the front: its desktop app by bundle
// identifier, or its web client when the app is not installed.
class HandoffApp
{
public:
    static const HandoffApp claude;
    static const HandoffApp chatgpt;

    // Every case, in the order the settings list them.
    static QList<HandoffApp> allCases();
    // Exactly "claude" or "chatgpt"; anything else is no app.
    static std::optional<HandoffApp> fromRawValue(QStringView rawValue);
    // The preference as a target: "chatgpt" is ChatGPT, every other stored
    // value (empty, unknown, differently capitalised) is Claude, the default.
    static HandoffApp fromPreference(QStringView stored);

    QString rawValue() const;
    QString id() const { return rawValue(); }
    QString displayName() const;
    QString bundleIdentifier() const;
    // The root address of the assistant's web client.
    QUrl webFallbackURL() const;

    friend bool operator==(const HandoffApp &, const HandoffApp &) = default;

private:
    enum class Case { Claude, ChatGPT };
    constexpr explicit HandoffApp(Case c) : m_case(c) {}

    Case m_case;

    friend size_t qHash(const HandoffApp &app, size_t seed) noexcept;
};

size_t qHash(const HandoffApp &app, size_t seed = 0) noexcept;
