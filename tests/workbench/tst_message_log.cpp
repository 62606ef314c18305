#include "workbench/app/message_log.h"

#include "tests/workbench/plant_bench.h"
#include "workbench/app/message_log_model.h"
#include "workbench/app/plant_watcher.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTableView>
#include <QTest>

using workbench::MessageLog;
using workbench::MessageLogModel;
using workbench::PlantWatcher;

namespace
{

/// The log of the plant, which requests reach as a terminal sends them.
struct Bench : PlantBench
{
    Bench()
    {
        service.setLatency(std::chrono::milliseconds(0));
        log.resize(900, 300);
    }

    bool ask(const QString &item, int channel = 1)
    {
        QString reply;
        return service.rawRequest(
            QStringLiteral("local"),
            QStringLiteral(
                R"({"t":"request","c":[{"c":"getItem","p":{"p":{"l":"0","a":"0","c":"%1"},"i":"%2"}}]})")
                .arg(channel)
                .arg(item),
            reply);
    }

    QString cell(int row, int column) { return log.table().model()->index(row, column).data().toString(); }
    int rows() { return log.table().model()->rowCount(); }
    QString details()
    {
        return log.findChild<QPlainTextEdit *>(QStringLiteral("messageDetails"))->toPlainText();
    }
    void filter(const QString &text)
    {
        log.findChild<QLineEdit *>(QStringLiteral("messageFilter"))->setText(text);
    }
    bool isAtEnd()
    {
        return log.table().verticalScrollBar()->value() == log.table().verticalScrollBar()->maximum();
    }

    PlantWatcher watcher{service};
    MessageLog log{watcher};
};

const QString Item = QStringLiteral("Status.voltageMeasure");

} // namespace

class TestMessageLog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsRequestsAndAnswers()
    {
        Bench bench;
        bench.log.show();
        QVERIFY(bench.ask(Item));
        QTRY_COMPARE(bench.rows(), 1);
        QTRY_COMPARE(bench.cell(0, MessageLogModel::ResultColumn), QStringLiteral("done"));
        QTRY_COMPARE(bench.cell(0, MessageLogModel::AnswerColumn), QStringLiteral("true; 0 V"));
        QVERIFY(bench.ask(QStringLiteral("Status.nonsense")));
        QTRY_COMPARE(bench.rows(), 2);
        QTRY_COMPARE(bench.cell(1, MessageLogModel::ResultColumn), QStringLiteral("no such item"));
    }

    void doesNothingWhileItIsHidden()
    {
        Bench bench;
        QVERIFY(!bench.watcher.isRunning());
        QVERIFY(bench.ask(Item));
        bench.log.show();
        QVERIFY(bench.watcher.isRunning());
        QVERIFY2(bench.rows() == 1, "what happened meanwhile is there at once");
        bench.log.hide();
        QVERIFY(!bench.watcher.isRunning());
    }

    void showsTheWholeMessage()
    {
        Bench bench;
        bench.log.show();
        QVERIFY(bench.ask(Item));
        QTRY_COMPARE(bench.cell(0, MessageLogModel::ResultColumn), QStringLiteral("done"));
        bench.log.table().setCurrentIndex(bench.log.table().model()->index(0, 0));
        QVERIFY(bench.details().contains(QStringLiteral("\"i\": \"Status.voltageMeasure\"")));
        QTRY_VERIFY(bench.details().contains(QStringLiteral("\"unit\": \"V\"")));
        bench.log.clear();
        QVERIFY(bench.details().isEmpty());
        QCOMPARE(bench.rows(), 0);
    }

    void addsToTheDetailsWhatComesLater()
    {
        Bench bench;
        bench.service.setLatency(std::chrono::milliseconds(300));
        bench.log.show();
        QVERIFY(bench.ask(Item));
        QTRY_COMPARE(bench.rows(), 1);
        bench.log.table().setCurrentIndex(bench.log.table().model()->index(0, 0));
        QVERIFY(bench.details().contains(QStringLiteral("no answer yet")));
        bench.step(1);
        QTRY_VERIFY(bench.details().contains(QStringLiteral("Answer after")));
    }

    void filters()
    {
        Bench bench;
        bench.log.show();
        for (int channel = 0; channel < 3; ++channel)
            QVERIFY(bench.ask(Item, channel));
        QVERIFY(bench.ask(QStringLiteral("Status.nonsense")));
        QTRY_COMPARE(bench.rows(), 4);
        QTRY_COMPARE(bench.cell(3, MessageLogModel::ResultColumn), QStringLiteral("no such item"));
        bench.filter(QStringLiteral("no SUCH"));
        QCOMPARE(bench.rows(), 1);
        bench.filter(QStringLiteral(R"("c":"2"})")); // in the message only
        QCOMPARE(bench.rows(), 1);
        QVERIFY(bench.cell(0, MessageLogModel::RequestColumn).contains(QStringLiteral("0.0.2")));
        bench.filter({});
        QCOMPARE(bench.rows(), 4);
    }

    void copies()
    {
        Bench bench;
        bench.log.show();
        QVERIFY(bench.ask(Item, 0));
        QVERIFY(bench.ask(Item, 1));
        QTRY_COMPARE(bench.cell(1, MessageLogModel::ResultColumn), QStringLiteral("done"));
        bench.log.table().selectAll();
        bench.log.copy();
        const QStringList lines = QGuiApplication::clipboard()->text().split(QLatin1Char('\n'));
        QCOMPARE(lines.size(), 2);
        QVERIFY(lines.at(0).contains(QStringLiteral(R"("c":"0"})")));
        QVERIFY(lines.at(1).contains(QStringLiteral(R"("c":"1"})")));
    }

    void staysAtTheEndUnlessScrolledUp()
    {
        Bench bench;
        bench.log.show();
        const auto askMany = [&](int number) {
            const int before = bench.rows();
            for (int count = 0; count < number; ++count)
                QVERIFY(bench.ask(Item));
            QTRY_COMPARE(bench.rows(), before + number);
        };
        askMany(100);
        QTRY_VERIFY(bench.log.table().verticalScrollBar()->maximum() > 0);
        QTRY_VERIFY(bench.isAtEnd());
        bench.log.table().verticalScrollBar()->setValue(10);
        askMany(50);
        QCoreApplication::processEvents();
        QCOMPARE(bench.log.table().verticalScrollBar()->value(), 10);
        bench.log.table().scrollToBottom();
        askMany(50);
        QTRY_VERIFY(bench.isAtEnd());
    }
};

QTEST_MAIN(TestMessageLog)

#include "tst_message_log.moc"
