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
    void substituteLargeBodies();
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
    QTest::newRow("vertical tab and next line are space") << "{{\u000Bx\u0085}}" << QStringList{"x"};
    QTest::newRow("zero-width space is not") << "{{\u200Bx}}" << QStringList{};
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

void TestVariables::substituteLargeBodies()
{
    // Ten megabytes with over a million placeholders whose values differ in
    // length from them: done in one pass, it takes a fraction of a second;
    // replaced one by one in place, it takes minutes and the run times out.
    QString text;
    QString expected;
    text.reserve(10'000'000);
    expected.reserve(12'000'000);
    for (int i = 0; text.size() < 10'000'000; ++i) {
        text += u"{{a}}";
        expected += u"value";
        if (i % 3 == 0) {
            text += u"\u00E9{{ b }}";
            expected += u"\u00E9";
        } else {
            text += u"{{c}}";
            expected += u"{{c}}";
        }
    }
    QCOMPARE(Variables::substitute(text, {{"a", "value"}, {"b", ""}}), expected);
}

QTEST_GUILESS_MAIN(TestVariables)
#include "tst_variables.moc"
