#pragma once

#include <QDialog>
#include <QHash>
#include <QStringList>

class QPlainTextEdit;

// The sheet that asks for a value per {{variable}} and shows the filled text
// live. Built afresh for each fill, so values are never remembered.
class VariableFillSheet : public QDialog
{
    Q_OBJECT

public:
    VariableFillSheet(const QStringList &variables, const QString &templateText, QWidget *parent = nullptr);

    QString filledText() const;
    // The field of one variable, for keyboard focus and tests.
    QPlainTextEdit *field(const QString &name) const { return m_fields.value(name); }
    QPlainTextEdit *preview() const { return m_preview; }

    // "Cancel", the close button and Escape: the sheet closes and says so.
    // A dismissal past them (the window manager's close, say) closes it
    // without cancelled().
    void cancel();

Q_SIGNALS:
    void copyRequested(const QString &filled);
    void cancelled();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void updatePreview();

    QStringList m_variables;
    QString m_template;
    QHash<QString, QString> m_values;
    QHash<QString, QPlainTextEdit *> m_fields;
    QPlainTextEdit *m_preview;
};
