// The alert dialog the app shows: texts, buttons in order with the first as
// default, the name field ready to type over, and the answers it gives.

#include "LibraryActions.h"
#include "TestFiles.h"
#include "ui/shell/AlertDialog.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScopeGuard>
#include <QTimer>

class TestAlertDialog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void confirmationLayout();
    void renameFieldIsSelectedAndFocused();
    void noticeHasOneButton();
    void answers_data();
    void answers();
};

namespace {

Project workProject()
{
    return {QStringLiteral("Work"), QUrl::fromLocalFile(QStringLiteral("/tmp/Work")), 2};
}

// Runs the alert through the dialog while `act` works on it once it shows.
AlertAnswer answer(const Alert &alert, const std::function<void(AlertDialog *)> &act)
{
    QTimer::singleShot(0, [act] {
        auto *dialog = qobject_cast<AlertDialog *>(QApplication::activeModalWidget());
        QVERIFY(dialog);
        // A failed check below must not leave the modal dialog waiting.
        const auto closeAnyway = qScopeGuard([dialog] {
            if (dialog->isVisible())
                dialog->reject();
        });
        QVERIFY(QTest::qWaitForWindowExposed(dialog));
        act(dialog);
    });
    DialogAlerts alerts(nullptr);
    return alerts.run(alert);
}

} // namespace

void TestAlertDialog::confirmationLayout()
{
    AlertDialog dialog(LibraryActions::deleteProjectAlert(workProject()));
    dialog.show();
    QVERIFY(QTest::qWaitForWindowExposed(&dialog));
    QCOMPARE(dialog.findChild<QLabel *>(QStringLiteral("message"))->text(), u"Move “Work” to Trash?");
    QCOMPARE(dialog.findChild<QLabel *>(QStringLiteral("informative"))->text(),
             u"This project contains 2 prompts. They will be moved to the Trash with the folder.");
    QCOMPARE(dialog.buttons().size(), 2);
    QCOMPARE(dialog.buttons()[0]->text(), u"Move to Trash");
    QCOMPARE(dialog.buttons()[1]->text(), u"Cancel");
    QVERIFY(dialog.buttons()[0]->isDefault());
    QVERIFY(!dialog.buttons()[1]->isDefault());
    // The first button sits rightmost, the second to its left.
    QVERIFY(dialog.buttons()[0]->geometry().left() > dialog.buttons()[1]->geometry().right());
    QVERIFY(!dialog.field());
}

void TestAlertDialog::renameFieldIsSelectedAndFocused()
{
    const Alert alert = LibraryActions::renameProjectAlert(workProject());
    const AlertAnswer answered = answer(alert, [](AlertDialog *dialog) {
        QLineEdit *field = dialog->field();
        QVERIFY(field);
        QCOMPARE(field->text(), u"Work");
        QCOMPARE(field->selectedText(), u"Work");
        QCOMPARE(field->width(), 260);
        QTRY_COMPARE(QApplication::focusWidget(), field);
        QCOMPARE(dialog->buttons()[0]->text(), u"Rename");
        // Typing replaces the whole name; Return chooses the default button.
        QTest::keyClicks(field, QStringLiteral("Clients"));
        QTest::keyClick(field, Qt::Key_Return);
    });
    QCOMPARE(answered.button, 0);
    QCOMPARE(answered.fieldText, u"Clients");
}

void TestAlertDialog::noticeHasOneButton()
{
    AlertDialog dialog(LibraryActions::renameRefusedAlert());
    QCOMPARE(dialog.buttons().size(), 1);
    QCOMPARE(dialog.buttons()[0]->text(), u"OK");
    QVERIFY(dialog.buttons()[0]->isDefault());
    QCOMPARE(dialog.findChild<QLabel *>(QStringLiteral("message"))->text(), u"Couldn't rename project.");
}

void TestAlertDialog::answers_data()
{
    QTest::addColumn<int>("how");
    QTest::addColumn<int>("button");
    QTest::newRow("first button") << 0 << 0;
    QTest::newRow("Cancel") << 1 << 1;
    QTest::newRow("Escape") << 2 << -1;
    QTest::newRow("Return") << 3 << 0;
}

void TestAlertDialog::answers()
{
    QFETCH(int, how);
    QFETCH(int, button);
    Prompt prompt;
    prompt.frontMatter.title = QStringLiteral("  ");
    const AlertAnswer answered = answer(LibraryActions::deletePromptsAlert({prompt}), [how](AlertDialog *dialog) {
        QCOMPARE(dialog->findChild<QLabel *>(QStringLiteral("message"))->text(), u"Move “New prompt” to Trash?");
        switch (how) {
        case 0:
            dialog->buttons()[0]->click();
            break;
        case 1:
            dialog->buttons()[1]->click();
            break;
        case 2:
            QTest::keyClick(dialog, Qt::Key_Escape);
            break;
        default:
            QTest::keyClick(dialog, Qt::Key_Return);
            break;
        }
    });
    QCOMPARE(answered.button, button);
}

QTEST_MAIN(TestAlertDialog)
#include "tst_alertdialog.moc"
