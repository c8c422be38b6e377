#include "TitleField.h"

#include "EditorText.h"
#include "PromptText.h"

#include <QValidator>

namespace {

// Rewrites what comes in rather than refusing it, so a pasted paragraph
// still arrives, on one line.
class OneLineValidator : public QValidator
{
public:
    using QValidator::QValidator;

    State validate(QString &input, int &position) const override
    {
        const QString clean = TitleField::withoutLineBreaks(input);
        if (clean != input) {
            position = EditorText::mapCursor(input, clean, position);
            input = clean;
        }
        return Acceptable;
    }
};

} // namespace

TitleField::TitleField(QWidget *parent)
    : QLineEdit(parent)
{
    setValidator(new OneLineValidator(this));
}

QString TitleField::withoutLineBreaks(const QString &text)
{
    return PromptText::oneLine(text);
}

void TitleField::showTitle(const QString &title)
{
    if (title == text())
        return;
    const int cursor = EditorText::mapCursor(text(), title, cursorPosition());
    setText(title); // not an edit: textEdited() stays silent
    setCursorPosition(cursor);
}
