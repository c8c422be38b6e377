#include "FrontMatter.h"

#include <QTest>

using Matter = QHash<QString, QString>;

class TestFrontMatter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void parse_data();
    void parse();
    void typedFields();
    void parseList_data();
    void parseList();
    void serialize();
    void serializeQuotesOnlyRiskyScalars_data();
    void serializeQuotesOnlyRiskyScalars();
};

void TestFrontMatter::parse_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<Matter>("matter");
    QTest::addColumn<QString>("body");
    const QString none = QStringLiteral("<whole text>");

    QTest::newRow("no opening line") << "title: x\n---\nBody" << Matter{} << none;
    QTest::newRow("opening without closing") << "---\ntitle: x\nBody\n" << Matter{} << none;
    QTest::newRow("leading blank line") << "\n---\ntitle: x\n---\n" << Matter{} << none;
    QTest::newRow("leading space") << " ---\ntitle: x\n---\n" << Matter{} << none;
    QTest::newRow("byte-order mark") << QChar(0xFEFF) + QStringLiteral("---\ntitle: x\n---\n") << Matter{} << none;
    QTest::newRow("four hyphens") << "----\ntitle: x\n---\n" << Matter{} << none;
    QTest::newRow("CRLF throughout never closes") << "---\r\ntitle: x\r\n---\r\nBody\r\n" << Matter{} << none;

    QTest::newRow("blank line after header stays in body")
        << "---\ntitle: T\n---\n\nText\n" << Matter{{"title", "T"}} << "\nText\n";
    QTest::newRow("closing is the last line") << "---\ntitle: T\n---" << Matter{{"title", "T"}} << "";
    QTest::newRow("empty block") << "---\n---\nB" << Matter{} << "B";
    QTest::newRow("padded closing line") << "---\ntitle: x\n \t---\t \nB" << Matter{{"title", "x"}} << "B";
    QTest::newRow("CRLF opening eats the next character")
        << "---\r\ntitle: x\n---\nBody" << Matter{{"itle", "x"}} << "Body";
    QTest::newRow("CRLF opening eats a whole emoji")
        << "---\r\n\U0001F600t: x\n---\n" << Matter{{"t", "x"}} << "";
    QTest::newRow("CRLF opening eats a following CRLF as one character")
        << "---\r\n\r\ntitle: x\n---\n" << Matter{{"title", "x"}} << "";
    QTest::newRow("CR inside a header line is kept")
        << "---\ntitle: x\r\n---\nB" << Matter{{"title", "x\r"}} << "B";
    QTest::newRow("value keeps later colons, keys and values trimmed")
        << "---\n  title :\ta: b \n---\n" << Matter{{"title", "a: b"}} << "";
    QTest::newRow("empty key and colon-less lines ignored, empty value kept")
        << "---\n: nothing\njust words\nmodel:\n---\n" << Matter{{"model", ""}} << "";
    QTest::newRow("later duplicate key wins")
        << "---\ntitle: one\ntitle: two\n---\n" << Matter{{"title", "two"}} << "";
    QTest::newRow("quotes are not undone")
        << "---\ntitle: \"a: b\"\n---\n" << Matter{{"title", "\"a: b\""}} << "";
}

void TestFrontMatter::parse()
{
    QFETCH(QString, text);
    QFETCH(Matter, matter);
    QFETCH(QString, body);
    if (body == u"<whole text>")
        body = text;

    const FrontMatter::ParseResult result = FrontMatter::parse(text);
    QCOMPARE(result.matter, matter);
    QCOMPARE(result.body, body);
}

void TestFrontMatter::typedFields()
{
    const auto fields = [](const char *header) {
        return FrontMatter::fromMatter(FrontMatter::parse(QString::fromUtf8(header)).matter);
    };

    PromptFrontMatter full = fields("---\ntitle: T\ntags: [a, b]\nmodel: gpt\npinned: TRUE\nextra: x\n---\n");
    QCOMPARE(full.title, u"T");
    QCOMPARE(full.tags, QStringList({"a", "b"}));
    QCOMPARE(full.model, u"gpt");
    QVERIFY(full.pinned);

    QVERIFY(!fields("---\npinned: yes\n---\n").pinned);
    QVERIFY(!fields("---\npinned: 1\n---\n").pinned);
    QCOMPARE(fields("---\ntitle: x\n---\n"), PromptFrontMatter{QStringLiteral("x")});
    // A block list is not understood: the key is empty, the item lines have no colon.
    QVERIFY(fields("---\ntags:\n- a\n- b\n---\n").tags.isEmpty());
    // The eaten first character turns "title" into "itle": no title at all.
    QCOMPARE(fields("---\r\ntitle: x\n---\n").title, QString());
}

void TestFrontMatter::parseList_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QStringList>("items");
    QTest::newRow("empty brackets") << "[]" << QStringList{};
    QTest::newRow("nothing") << "" << QStringList{};
    QTest::newRow("empty item dropped") << "[a, , b]" << QStringList{"a", "b"};
    QTest::newRow("no brackets") << "a, b" << QStringList{"a", "b"};
    QTest::newRow("quotes kept") << "[\"x\", y]" << QStringList{"\"x\"", "y"};
    QTest::newRow("duplicates and order kept") << " [b,a,b] " << QStringList{"b", "a", "b"};
    QTest::newRow("lone bracket is text") << "[a" << QStringList{"[a"};
}

void TestFrontMatter::parseList()
{
    QFETCH(QString, value);
    QFETCH(QStringList, items);
    QCOMPARE(FrontMatter::parseList(value), items);
}

void TestFrontMatter::serialize()
{
    QCOMPARE(FrontMatter::serialize({}), u"---\ntitle: \n---\n");
    PromptFrontMatter full{QStringLiteral("Plan"), {QStringLiteral("a"), QStringLiteral("b c")},
                           QStringLiteral("gpt-4"), true};
    QCOMPARE(FrontMatter::serialize(full), u"---\ntitle: Plan\ntags: [a, b c]\nmodel: gpt-4\npinned: true\n---\n");

    // Tags are written raw, even when that breaks them apart on the next read.
    PromptFrontMatter rawTags{{}, {QStringLiteral("x, y")}, {}, false};
    QCOMPARE(FrontMatter::serialize(rawTags), u"---\ntitle: \ntags: [x, y]\n---\n");
}

void TestFrontMatter::serializeQuotesOnlyRiskyScalars_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("written");
    QTest::newRow("plain") << "Plain text" << "Plain text";
    QTest::newRow("colon") << "a: b" << "\"a: b\"";
    QTest::newRow("double quote") << "say \"hi\"" << "\"say \\\"hi\\\"\"";
    QTest::newRow("leading hyphen") << "-x" << "\"-x\"";
    QTest::newRow("leading bracket") << "[x" << "\"[x\"";
    QTest::newRow("leading brace") << "{x" << "\"{x\"";
    QTest::newRow("leading hash") << "#x" << "\"#x\"";
    QTest::newRow("inner hash and hyphen") << "a#-b" << "a#-b";
    QTest::newRow("backslash not escaped") << "a\\b: c" << "\"a\\b: c\"";
}

void TestFrontMatter::serializeQuotesOnlyRiskyScalars()
{
    QFETCH(QString, title);
    QFETCH(QString, written);
    QCOMPARE(FrontMatter::serialize({title, {}, {}, false}), u"---\ntitle: " + written + u"\n---\n");
    QCOMPARE(FrontMatter::serialize({{}, {}, title, false}), u"---\ntitle: \nmodel: " + written + u"\n---\n");
}

QTEST_GUILESS_MAIN(TestFrontMatter)
#include "tst_frontmatter.moc"
