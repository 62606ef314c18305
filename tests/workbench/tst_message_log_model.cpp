#include "workbench/app/message_log_model.h"

#include "workbench/app/logged_request.h"

#include <QIcon>
#include <QJsonDocument>
#include <QSignalSpy>
#include <QTest>

using simulator::JournalEntry;
using workbench::LoggedAnswer;
using workbench::LoggedRequest;
using workbench::MessageLogModel;

Q_DECLARE_METATYPE(QVector<workbench::LoggedAnswer>)

namespace
{

/// JSON that is written with single quotes.
QString json(const char *text)
{
    return QString::fromLatin1(text).replace(QLatin1Char('\''), QLatin1Char('"'));
}

const QString Done = json("[{'trigger':'true'}]");
const QString Refused = json("[{'trigger':'false'}]");
const QString Voltage = json("[{'controller':'local','line':0,'address':0,'channel':1,'item':'Status."
                             "voltageMeasure','value':499.8,'unit':'V'}]");
const QString Get = json("{'i':'x','t':'request','c':[{'c':'getItem','p':{'p':{'l':'0','a':'0','c':'1'},'i':'"
                         "Status.voltageMeasure'}}]}");

JournalEntry request(quint64 number, const QString &text = Get)
{
    JournalEntry entry;
    entry.kind = JournalEntry::Request;
    entry.request = number;
    entry.time = 12.5;
    entry.controller = QStringLiteral("local");
    entry.text = text;
    return entry;
}

JournalEntry answer(quint64 number, const QString &text, JournalEntry::Kind kind = JournalEntry::Answer)
{
    JournalEntry entry = request(number, text);
    entry.kind = kind;
    entry.delay = 0.0052;
    return entry;
}

QString cell(const MessageLogModel &model, int row, int column)
{
    return model.index(row, column).data().toString();
}

LoggedAnswer logged(const QString &text, bool isLost = false)
{
    return {1, 0.005, text, isLost};
}

} // namespace

class TestMessageLogModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keepsNumbersAndWordsApart()
    {
        const workbench::MessageLogModel model;
        const auto isAligned = [&](int column, Qt::AlignmentFlag side) {
            const QVariant value = model.headerData(column, Qt::Horizontal, Qt::TextAlignmentRole);
            return ((value.isValid() ? value.toInt() : int(Qt::AlignLeft)) & side) != 0;
        };
        for (int column = 1; column < model.columnCount(); ++column)
            QVERIFY(!isAligned(column - 1, Qt::AlignRight) || !isAligned(column, Qt::AlignLeft));
    }

    void tiesAnswersToTheirRequests()
    {
        MessageLogModel model;
        model.take({request(1), request(2), answer(2, Refused), answer(1, Done)});
        model.take({answer(1, Voltage)});
        QCOMPARE(model.rowCount(), 2);
        QCOMPARE(cell(model, 0, MessageLogModel::RequestColumn),
                 QStringLiteral("get 0.0.1 Status.voltageMeasure"));
        QCOMPARE(cell(model, 0, MessageLogModel::AnswerColumn), QStringLiteral("true; 499.8 V"));
        QCOMPARE(cell(model, 0, MessageLogModel::LatencyColumn), QLocale().toString(5.2, 'f', 1));
        QCOMPARE(cell(model, 0, MessageLogModel::TimeColumn), QLocale().toString(12.5, 'f', 3));
        QCOMPARE(cell(model, 0, MessageLogModel::ResultColumn), QStringLiteral("done"));
        QCOMPARE(cell(model, 1, MessageLogModel::ResultColumn), QStringLiteral("refused"));
    }

    void saysWhatCameOfIt_data()
    {
        QTest::addColumn<QVector<LoggedAnswer>>("answers");
        QTest::addColumn<bool>("isDropped");
        QTest::addColumn<QString>("text");
        const auto trigger = [](const char *word) {
            return json("[{'trigger':'%1'}]").arg(QLatin1String(word));
        };
        using Answers = QVector<LoggedAnswer>;
        QTest::newRow("nothing yet") << Answers() << false << QStringLiteral("no answer yet");
        QTest::newRow("controller left") << Answers() << true << QStringLiteral("none: controller left");
        QTest::newRow("done") << Answers{logged(Done), logged(Voltage)} << false << QStringLiteral("done");
        QTest::newRow("refused") << Answers{logged(Refused)} << false << QStringLiteral("refused");
        QTest::newRow("denied") << Answers{logged(trigger("denied"))} << false << QStringLiteral("denied");
        QTest::newRow("no such item")
            << Answers{logged(trigger("noData"))} << false << QStringLiteral("no such item");
        QTest::newRow("lost") << Answers{logged(Done, true)} << false << QStringLiteral("lost");
        QTest::newRow("data lost") << Answers{logged(Done), logged(Voltage, true)} << false
                                   << QStringLiteral("partly lost");
        QTest::newRow("twice") << Answers{logged(Done), logged(Done)} << false
                               << QStringLiteral("done, came twice");
    }

    void saysWhatCameOfIt()
    {
        QFETCH(QVector<LoggedAnswer>, answers);
        QFETCH(bool, isDropped);
        QFETCH(QString, text);
        LoggedRequest entry;
        entry.answers = answers;
        entry.isDropped = isDropped;
        QCOMPARE(workbench::outcomeText(entry), text);
    }

    void showsWhatWasRefusedAtOnce()
    {
        const QString reason = QStringLiteral("malformed JSON at line 1, column 1: illegal value");
        MessageLogModel model;
        JournalEntry left;
        left.kind = JournalEntry::ControllerLeft;
        left.controller = QStringLiteral("local");
        model.take({request(1, QStringLiteral("what is\nthis")), request(2),
                    answer(1, reason, JournalEntry::RequestRefused), answer(2, Done), left});
        QCOMPARE(model.rowCount(), 2);
        QCOMPARE(cell(model, 0, MessageLogModel::RequestColumn), QStringLiteral("what is this"));
        QCOMPARE(cell(model, 0, MessageLogModel::AnswerColumn), reason);
        QCOMPARE(cell(model, 0, MessageLogModel::ResultColumn), QStringLiteral("refused"));
        QVERIFY(cell(model, 0, MessageLogModel::LatencyColumn).isEmpty());
        QCOMPARE(model.at(0).outcome(), LoggedRequest::Refused);
        QVERIFY(model.lineOf(0).contains(reason)); // which is what the filter looks at
        const QString details = workbench::requestDetails(model.at(0));
        QVERIFY2(details.endsWith(QStringLiteral("Refused at once:\n") + reason), qPrintable(details));
        QCOMPARE(cell(model, 1, MessageLogModel::ResultColumn), QStringLiteral("done"));
    }

    void showsWhatPassesThrough()
    {
        const auto message = [](JournalEntry::Kind kind, const char *text) {
            JournalEntry entry = request(0, QString::fromLatin1(text));
            entry.kind = kind;
            return entry;
        };
        MessageLogModel model;
        model.take({message(JournalEntry::PassThroughIn, "getItem 0.3.7 Status.voltageMeasure"), request(1),
                    message(JournalEntry::PassThroughOut, "getItem 0.3.7 Status.voltageMeasure 12.5 V"),
                    request(2), answer(1, Done), answer(2, Refused)});
        QCOMPARE(model.rowCount(), 4);
        QCOMPARE(cell(model, 0, MessageLogModel::RequestColumn),
                 QStringLiteral("getItem 0.3.7 Status.voltageMeasure"));
        QCOMPARE(cell(model, 0, MessageLogModel::ControllerColumn), QStringLiteral("local"));
        QCOMPARE(cell(model, 0, MessageLogModel::ResultColumn), QStringLiteral("to the script"));
        QVERIFY(cell(model, 0, MessageLogModel::LatencyColumn).isEmpty());
        QCOMPARE(cell(model, 2, MessageLogModel::ResultColumn), QStringLiteral("from the script"));
        QVERIFY(workbench::requestDetails(model.at(2)).contains(QStringLiteral("12.5 V")));
        // The answers are those of the requests beside them.
        QCOMPARE(cell(model, 1, MessageLogModel::ResultColumn), QStringLiteral("done"));
        QCOMPARE(cell(model, 3, MessageLogModel::ResultColumn), QStringLiteral("refused"));
    }

    void marksWhatIsLostByMoreThanColour()
    {
        MessageLogModel model;
        model.take({request(1), answer(1, Done), request(2), answer(2, Done, JournalEntry::AnswerLost)});
        const auto icon = [&](int row) {
            return model.index(row, MessageLogModel::ResultColumn).data(Qt::DecorationRole).value<QIcon>();
        };
        QVERIFY(!icon(1).isNull());
        QVERIFY(icon(0).cacheKey() != icon(1).cacheKey());
        QCOMPARE(cell(model, 1, MessageLogModel::ResultColumn), QStringLiteral("lost"));
        QVERIFY(cell(model, 1, MessageLogModel::LatencyColumn).isEmpty());
    }

    void marksWhatPassesThroughByItsDirection()
    {
        MessageLogModel model;
        JournalEntry in = request(1);
        in.kind = JournalEntry::PassThroughIn;
        JournalEntry out = request(1);
        out.kind = JournalEntry::PassThroughOut;
        model.take({request(1), answer(1, Done), in, out});
        const auto shape = [&](int row) {
            constexpr int Size = 16;
            const QIcon icon =
                model.index(row, MessageLogModel::ResultColumn).data(Qt::DecorationRole).value<QIcon>();
            return icon.pixmap(Size, Size).toImage().convertToFormat(QImage::Format_Alpha8);
        };
        QVERIFY2(shape(1) != shape(0), "it is no request that was done");
        QVERIFY(shape(2) != shape(0));
        QVERIFY(shape(1) != shape(2));
        QVERIFY2(shape(1).mirrored(true, false) == shape(2), "the arrow points the other way");
    }

    void tellsWhatAControllerTookWithIt()
    {
        MessageLogModel model;
        JournalEntry left;
        left.kind = JournalEntry::ControllerLeft;
        left.controller = QStringLiteral("local");
        JournalEntry other = request(3);
        other.controller = QStringLiteral("bench");
        model.take({request(1), answer(1, Done), request(2), other, left});
        QCOMPARE(cell(model, 0, MessageLogModel::ResultColumn), QStringLiteral("done"));
        QCOMPARE(cell(model, 1, MessageLogModel::ResultColumn), QStringLiteral("none: controller left"));
        QCOMPARE(cell(model, 2, MessageLogModel::ResultColumn), QStringLiteral("no answer yet"));
    }

    void keepsSoMany()
    {
        MessageLogModel model;
        QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
        QVector<JournalEntry> entries;
        for (int number = 1; number <= MessageLogModel::MostRows + 50; ++number)
            entries.append(request(quint64(number)));
        model.take(entries);
        QCOMPARE(model.rowCount(), int(MessageLogModel::MostRows));
        QCOMPARE(model.at(0).number, quint64(51));
        QCOMPARE(removed.size(), 1);
        model.take({answer(50, Done), answer(51, Done)}); // the first of them is gone
        QCOMPARE(cell(model, 0, MessageLogModel::ResultColumn), QStringLiteral("done"));
    }

    void summarises_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("summary");
        QTest::newRow("get") << Get << QStringLiteral("get 0.0.1 Status.voltageMeasure");
        QTest::newRow("set") << json("{'t':'request','c':[{'c':'setItem','p':{'p':{'l':'0','a':'2'},'i':'"
                                     "Control.voltageRampspeed','v':'20','u':'%/s'}}]}")
                             << QStringLiteral("set 0.2 Control.voltageRampspeed 20 %/s");
        QTest::newRow("several") << json(
            "{'t':'request','c':[{'c':'getItem','p':{'p':{'l':'0','a':'2'},'i':'Status.a'}},{'c':'setItem','"
            "p':{'p':{'l':'0','a':'2','c':'1'},'i':'Control.on','v':'1'}}]}")
                                 << QStringLiteral("get 0.2 Status.a; set 0.2.1 Control.on 1");
        QTest::newRow("no request") << QStringLiteral("what\n  is this") << QStringLiteral("what is this");
    }

    void summarises()
    {
        QFETCH(QString, text);
        QFETCH(QString, summary);
        LoggedRequest entry;
        entry.text = text;
        QCOMPARE(workbench::requestSummary(entry), summary);
    }

    void showsTheWholeInDetail()
    {
        LoggedRequest entry;
        entry.number = 7;
        entry.text = json("{'i':'a \\'quoted\\' {text}','c':[1,2],'t':'request'}");
        entry.answers = {logged(Done), logged(QStringLiteral("not JSON, just text"), true)};
        const QString details = workbench::requestDetails(entry);
        // Indented, and in the order in which it was sent.
        QVERIFY(details.contains(
            QStringLiteral("{\n  \"i\": \"a \\\"quoted\\\" {text}\",\n  \"c\": [\n    1,\n    2\n  ],\n"
                           "  \"t\": \"request\"\n}")));
        QVERIFY(details.contains(QStringLiteral("Answer after 5.0 ms")));
        QVERIFY(details.contains(QStringLiteral("lost on its way")));
        QVERIFY(details.contains(QStringLiteral("not JSON, just text")));
    }

    void copiesWholeTexts()
    {
        MessageLogModel model;
        model.take({request(1), answer(1, Done), answer(1, Voltage)});
        const QStringList cells = model.lineOf(0).split(QLatin1Char('\t'));
        QCOMPARE(cells.size(), int(MessageLogModel::ColumnCount));
        QCOMPARE(cells.at(MessageLogModel::RequestColumn), Get);
        QCOMPARE(cells.at(MessageLogModel::AnswerColumn), Done + QLatin1Char(' ') + Voltage);
    }

    void forgets()
    {
        MessageLogModel model;
        model.take({request(1)});
        model.clear();
        QCOMPARE(model.rowCount(), 0);
        model.take({answer(1, Done), request(2)});
        QCOMPARE(model.rowCount(), 1);
    }
};

QTEST_MAIN(TestMessageLogModel)

#include "tst_message_log_model.moc"
