#pragma once

#include <QWidget>

class QLabel;

// A centred column of a large symbol, a line and a smaller note.
class Placeholder : public QWidget
{
    Q_OBJECT

public:
    Placeholder(const QString &symbol, int symbolSize, QWidget *parent = nullptr);
    void setTexts(const QString &headline, const QString &note);
    QString headline() const;

protected:
    void changeEvent(QEvent *event) override;

private:
    void updateColors();
    QString m_symbol;
    int m_symbolSize;
    QLabel *m_icon;
    QLabel *m_headline;
    QLabel *m_note;
};
