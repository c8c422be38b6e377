// A stand-in for an assistant's desktop app in the end-to-end hand-off test:
// one window with a text field that takes focus at once. Whatever reaches the
// field is written to the file given as --out, so the test can read it.
//
//   handoff_target --out FILE [anything the desktop entry adds]

#include <QApplication>
#include <QPlainTextEdit>
#include <QSaveFile>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const qsizetype at = arguments.indexOf(QStringLiteral("--out"));
    if (at < 0 || at + 1 >= arguments.size())
        return 2;
    const QString out = arguments.at(at + 1);
    QSaveFile pid(out + u".pid");
    if (pid.open(QIODevice::WriteOnly)) {
        pid.write(QByteArray::number(QCoreApplication::applicationPid()));
        pid.commit();
    }

    QPlainTextEdit field;
    field.setWindowTitle(QStringLiteral("Assistant"));
    field.resize(480, 240);
    QObject::connect(&field, &QPlainTextEdit::textChanged, &field, [&field, out] {
        QSaveFile file(out);
        if (file.open(QIODevice::WriteOnly)) {
            file.write(field.toPlainText().toUtf8());
            file.commit();
        }
    });
    field.show();
    field.raise();
    field.activateWindow(); // as an app brought to the front takes the keyboard
    field.setFocus();
    return app.exec();
}
