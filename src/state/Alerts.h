#pragma once

#include <QString>
#include <QStringList>

#include <optional>

// A modal question or notice: a message, an informative text, buttons in
// order (the first is the default; none means the platform's single "OK")
// and, for naming, one text field.
struct Alert
{
    enum class Style { Informational, Warning };

    Style style = Style::Warning;
    QString message;
    QString informative;
    QStringList buttons;
    // A single-line field holding this text, all of it selected, with the
    // initial focus; none for no field.
    std::optional<QString> field;

    friend bool operator==(const Alert &, const Alert &) = default;
};

// The button chosen (0 is the first; -1 when the alert was closed another
// way) and the field's text at that moment.
struct AlertAnswer
{
    int button = -1;
    QString fieldText;
};

// Shows alerts and waits for the answer. The app shows modal dialogs; tests
// answer from a script. Keeps dialogs out of the application state.
class Alerts
{
public:
    virtual ~Alerts() = default;
    virtual AlertAnswer run(const Alert &alert) = 0;
};
