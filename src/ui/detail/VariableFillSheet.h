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

Q_SIGNALS:
    void copyRequested(const QString &filled);
    void cancelled();

public:
    // Escape, the close button and "Cancel" all end here.
    void reject() override;

private:
    void updatePreview();

    QStringList m_variables;
    QString m_template;
    QHash<QString, QString> m_values;
    QHash<QString, QPlainTextEdit *> m_fields;
    QPlainTextEdit *m_preview;
};
