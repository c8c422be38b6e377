#pragma once

#include <QLineEdit>

// The one-line title of a prompt. A title is one line of the file's header,
// so line breaks (typed, pasted or dropped) become spaces as they come in.
class TitleField : public QLineEdit
{
    Q_OBJECT

public:
    explicit TitleField(QWidget *parent = nullptr);

    // Shows `title` in place of the current text without counting as an
    // edit; the cursor stays beside the text it was in.
    void showTitle(const QString &title);

    static QString withoutLineBreaks(const QString &text);
};
