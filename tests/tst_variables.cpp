#include "Variables.h"

#include <QTest>

using Values = QHash<QString, QString>;

class TestVariables : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void extract_data();
    void extract();
    void substitute_data();
    void substitute();
};

void TestVariables::extract_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("no braces") << "plain text" << QStringList{};
    QTest::newRow("one name in three spellings") << "{{name}} {{ name }} {{\n name\t}}" << QStringList{"name"};
    QTest::newRow("first appearance order") << "{{b}} {{a}} {{b}} {{_c1}}" << QStringList{"b", "a", "_c1"};
    QTest::newRow("case makes two names") << "{{Name}} {{name}}" << QStringList{"Name", "name"};
    QTest::newRow("not names") << "{{1x}} {{a-b}} {{a b}} {{é}} {{}} {x}" << QStringList{};
    QTest::newRow("triple braces hold one") << "{{{x}}}" << QStringList{"x"};
    QTest::newRow("unicode space inside") << "{{\u00A0x\u2003}}" << QStringList{"x"};
}

void TestVariables::extract()
{
    QFETCH(QString, text);
    QFETCH(QStringList, names);
    QCOMPARE(Variables::extract(text), names);
}

void TestVariables::substitute_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<Values>("values");
    QTest::addColumn<QString>("result");
    QTest::newRow("no braces") << "plain" << Values{{"a", "1"}} << "plain";
    QTest::newRow("all spellings replaced")
        << "{{name}}|{{ name }}|{{\nname\n}}" << Values{{"name", "Ann"}} << "Ann|Ann|Ann";
    QTest::newRow("missing stays, empty removes")
        << "[{{a}}][{{b}}]" << Values{{"b", ""}} << "[{{a}}][]";
    QTest::newRow("values are not expanded again")
        << "{{a}} {{b}}" << Values{{"a", "{{b}}"}, {"b", "B"}} << "{{b}} B";
    QTest::newRow("no new placeholder across a value")
        << "{{{{a}}b}}" << Values{{"a", ""}} << "{{b}}";
    QTest::newRow("triple braces keep one pair") << "{{{x}}}" << Values{{"x", "v"}} << "{v}";
    QTest::newRow("after an emoji") << "\U0001F600 {{x}} \U0001F600{{y}}" << Values{{"x", "1"}, {"y", "22"}}
                                    << "\U0001F600 1 \U0001F60022";
    QTest::newRow("longer and shorter values") << "{{a}}-{{b}}-{{a}}" << Values{{"a", "long value"}, {"b", ""}}
                                               << "long value--long value";
}

void TestVariables::substitute()
{
    QFETCH(QString, text);
    QFETCH(Values, values);
    QFETCH(QString, result);
    QCOMPARE(Variables::substitute(text, values), result);
}

QTEST_GUILESS_MAIN(TestVariables)
#include "tst_variables.moc"
