#include "TitleField.h"

#include "EditorText.h"

#include <QValidator>

namespace {

bool isLineBreak(QChar c)
{
    return c == u'\n' || c == u'\r' || c == u'\v' || c == u'\f' || c == QChar(0x85) || c == QChar::LineSeparator
        || c == QChar::ParagraphSeparator;
}

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
    QString clean;
    clean.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (!isLineBreak(text[i])) {
            clean.append(text[i]);
            continue;
        }
        clean.append(u' ');
        if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n')
            ++i; // one break, one space
    }
    return clean;
}

void TitleField::showTitle(const QString &title)
{
    if (title == text())
        return;
    const int cursor = EditorText::mapCursor(text(), title, cursorPosition());
    setText(title); // not an edit: textEdited() stays silent
    setCursorPosition(cursor);
}
