#include "VariableFillSheet.h"

#include "Variables.h"
#include "ui/theme/Icons.h"
#include "ui/theme/Theme.h"

#include <QDialogButtonBox>
#include <QFrame>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QSplitter>
#include <QToolButton>
#include <QVBoxLayout>

namespace {


QWidget *bar(QWidget *parent)
{
    auto *widget = new QWidget(parent);
    widget->setAutoFillBackground(true);
    widget->setBackgroundRole(QPalette::Window);
    return widget;
}

} // namespace

VariableFillSheet::VariableFillSheet(const QStringList &variables, const QString &templateText, QWidget *parent)
    : QDialog(parent)
    , m_variables(variables)
    , m_template(templateText)
    , m_preview(new QPlainTextEdit(this))
{
    setWindowTitle(QStringLiteral("Fill Variables"));
    // A real sheet on macOS, a dialog elsewhere (X11 marks a sheet as a
    // dialog window). Qt::Sheet replaces QDialog's window type: OR-ed into
    // Qt::Dialog its bits make Qt::Drawer.
    setWindowFlags((windowFlags() & ~Qt::WindowType_Mask) | Qt::Sheet);
    setWindowModality(Qt::WindowModal);
    setMinimumSize(640, 360);
    resize(720, 420);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);

    // Title row.
    QWidget *titleRow = bar(this);
    auto *titleLayout = new QHBoxLayout(titleRow);
    titleLayout->setContentsMargins(14, 10, 10, 10);
    auto *title = new QLabel(QStringLiteral("Fill Variables"), titleRow);
    title->setFont(Theme::font(14, QFont::DemiBold));
    auto *close = new QToolButton(titleRow);
    close->setAutoRaise(true);
    close->setIcon(Icons::icon(QStringLiteral("xmark"), Theme::secondaryText(palette()), 11));
    close->setToolTip(QStringLiteral("Cancel"));
    connect(close, &QToolButton::clicked, this, &VariableFillSheet::cancel);
    titleLayout->addWidget(title);
    titleLayout->addStretch();
    titleLayout->addWidget(close);
    layout->addWidget(titleRow);
    layout->addWidget(Theme::divider(this));

    // Fields on the left, the live preview on the right.
    auto *split = new QSplitter(Qt::Horizontal, this);
    split->setChildrenCollapsible(false);
    auto *fieldsArea = new QScrollArea(split);
    fieldsArea->setWidgetResizable(true);
    fieldsArea->setFrameShape(QFrame::NoFrame);
    fieldsArea->setMinimumWidth(280);
    auto *fields = new QWidget(fieldsArea);
    auto *fieldsLayout = new QVBoxLayout(fields);
    fieldsLayout->setContentsMargins(14, 10, 14, 4);
    fieldsLayout->setSpacing(4);
    for (const QString &name : m_variables) {
        auto *label = new QLabel(name, fields);
        label->setFont(Theme::monospaceFont(11, QFont::Medium));
        Theme::setTextTone(label, Theme::Tone::Secondary);
        auto *field = new QPlainTextEdit(fields);
        field->setObjectName(u"field:" + name);
        field->setFont(Theme::monospaceFont(12));
        field->setTabChangesFocus(true);
        field->setMinimumHeight(48);
        field->setMaximumHeight(120);
        field->setFixedHeight(56);
        label->setBuddy(field);
        connect(field, &QPlainTextEdit::textChanged, this, [this, name, field] {
            m_values.insert(name, field->toPlainText());
            updatePreview();
        });
        m_fields.insert(name, field);
        fieldsLayout->addWidget(label);
        fieldsLayout->addWidget(field);
        fieldsLayout->addSpacing(6);
    }
    fieldsLayout->addStretch();
    fieldsArea->setWidget(fields);

    auto *previewPane = new QWidget(split);
    previewPane->setMinimumWidth(280);
    auto *previewLayout = new QVBoxLayout(previewPane);
    previewLayout->setContentsMargins(0, 0, 0, 0);
    previewLayout->setSpacing(0);
    auto *previewHeading = new QLabel(QStringLiteral("Preview"), previewPane);
    previewHeading->setFont(Theme::font(11, QFont::Medium));
    previewHeading->setContentsMargins(14, 10, 14, 4);
    m_preview->setReadOnly(true);
    m_preview->setObjectName(QStringLiteral("preview"));
    m_preview->setFont(Theme::monospaceFont(12));
    m_preview->setFrameShape(QFrame::NoFrame);
    m_preview->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_preview->document()->setDocumentMargin(14);
    previewLayout->addWidget(previewHeading);
    previewLayout->addWidget(m_preview, 1);
    split->addWidget(fieldsArea);
    split->addWidget(previewPane);
    split->setSizes({340, 380});
    layout->addWidget(split, 1);
    layout->addWidget(Theme::divider(this));

    // Buttons: Escape cancels, Return copies.
    QWidget *buttonRow = bar(this);
    auto *buttonLayout = new QHBoxLayout(buttonRow);
    buttonLayout->setContentsMargins(14, 10, 14, 10);
    auto *cancelButton = new QPushButton(QStringLiteral("Cancel"), buttonRow);
    auto *copy = new QPushButton(QStringLiteral("Copy"), buttonRow);
    copy->setObjectName(QStringLiteral("copyButton"));
    copy->setDefault(true);
    copy->setAutoDefault(true);
    cancelButton->setAutoDefault(false);
    connect(cancelButton, &QPushButton::clicked, this, &VariableFillSheet::cancel);
    connect(copy, &QPushButton::clicked, this, [this] {
        // Closed first: what the copy sets off (a hand-off) happens with the sheet gone.
        const QString filled = filledText();
        accept();
        Q_EMIT copyRequested(filled);
    });
    buttonLayout->addStretch();
    buttonLayout->addWidget(cancelButton);
    buttonLayout->addWidget(copy);
    layout->addWidget(buttonRow);

    updatePreview();
    if (!m_variables.isEmpty())
        m_fields.value(m_variables.first())->setFocus();
}

QString VariableFillSheet::filledText() const
{
    return Variables::substitute(m_template, m_values);
}

void VariableFillSheet::cancel()
{
    QDialog::reject();
    Q_EMIT cancelled();
}

void VariableFillSheet::keyPressEvent(QKeyEvent *event)
{
    // Escape is the Cancel button's shortcut, as a sheet's cancel action.
    if (event->matches(QKeySequence::Cancel)) {
        cancel();
        return;
    }
    // Return makes a new line in a value field, so Ctrl+Return (Cmd+Return)
    // copies from anywhere in the sheet.
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        && (event->modifiers() & ~Qt::KeypadModifier) == Qt::ControlModifier) {
        findChild<QPushButton *>(QStringLiteral("copyButton"))->click();
        return;
    }
    QDialog::keyPressEvent(event);
}

void VariableFillSheet::updatePreview()
{
    m_preview->setPlainText(filledText());
}
