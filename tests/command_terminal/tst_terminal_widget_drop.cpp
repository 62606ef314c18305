#include "command_terminal/terminal_widget.h"
#include "tests/command_terminal/terminal_widget_bench.h"
#include "workbench/hostkit/drag_payload.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QtTest>

Q_DECLARE_METATYPE(Qt::DropActions)

namespace
{

const QPoint somewhere(5, 5);

OrbItemId channel(quint32 line, quint32 address, int index)
{
    OrbItemId id(OrbItemId::Channel);
    id.line = line;
    id.address = address;
    id.channel = index;
    return id;
}

} // namespace

/// Items that are dragged over the tool and dropped onto it.
class TestTerminalWidgetDrop : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void entering_data();
    void entering();
    void dropping_data();
    void dropping();
    void payloads_data();
    void payloads();
    void severalItemsSelectTheFirst();
    void everywhereOnTheTool_data();
    void everywhereOnTheTool();
    void whileARequestIsOut();

private:
    QStringList numbers() const
    {
        return {bench->field("lineEdit")->text(), bench->field("addressEdit")->text(),
                bench->field("channelEdit")->text()};
    }
    std::unique_ptr<QMimeData> payload(const QVector<OrbItemId> &items) const
    {
        return hostkit::makeDragPayload(items, bench->mainData.getDndMimeType());
    }

    std::unique_ptr<TerminalWidgetBench> bench;
};

void TestTerminalWidgetDrop::init()
{
    bench = std::make_unique<TerminalWidgetBench>();
    bench->field("lineEdit")->setText(QStringLiteral("typed"));
    bench->window.show();
}

void TestTerminalWidgetDrop::cleanup()
{
    bench.reset();
}

void TestTerminalWidgetDrop::entering_data()
{
    QTest::addColumn<Qt::DropActions>("actions");
    QTest::addColumn<bool>("ours");
    QTest::addColumn<bool>("accepted");
    const Qt::DropActions copy = Qt::CopyAction;
    const Qt::DropActions move = Qt::MoveAction;
    const Qt::DropActions link = Qt::LinkAction;
    QTest::newRow("copy") << copy << true << true;
    QTest::newRow("move") << move << true << true;
    QTest::newRow("copy or move") << (copy | move) << true << true;
    QTest::newRow("copy or link") << (copy | link) << true << true;
    QTest::newRow("link alone") << link << true << false;
    QTest::newRow("no action") << Qt::DropActions() << true << false;
    QTest::newRow("something else, to copy") << copy << false << false;
    QTest::newRow("something else, to link") << link << false << false;
}

void TestTerminalWidgetDrop::entering()
{
    QFETCH(Qt::DropActions, actions);
    QFETCH(bool, ours);
    std::unique_ptr<QMimeData> data = payload({channel(1, 2, 3)});
    if (!ours) {
        data = std::make_unique<QMimeData>();
        data->setText(QStringLiteral("1.2.3"));
    }
    QDragEnterEvent event(somewhere, actions, data.get(), Qt::LeftButton, Qt::NoModifier);
    QVERIFY(!event.isAccepted());
    bench->tool->dragEnterEvent(&event);
    QTEST(event.isAccepted(), "accepted");
    if (event.isAccepted())
        QCOMPARE(event.dropAction(), event.proposedAction());
    QCOMPARE(numbers().constFirst(), QStringLiteral("typed"));
}

void TestTerminalWidgetDrop::dropping_data()
{
    entering_data();
}

void TestTerminalWidgetDrop::dropping()
{
    QFETCH(Qt::DropActions, actions);
    QFETCH(bool, ours);
    QFETCH(bool, accepted);
    std::unique_ptr<QMimeData> data = payload({channel(1, 2, 3)});
    if (!ours) {
        data = std::make_unique<QMimeData>();
        data->setText(QStringLiteral("1.2.3"));
    }
    QDropEvent event(somewhere, actions, data.get(), Qt::LeftButton, Qt::NoModifier);
    bench->tool->dropEvent(&event);
    QCOMPARE(event.isAccepted(), accepted);
    if (accepted) {
        QCOMPARE(event.dropAction(), event.proposedAction());
        QCOMPARE(numbers(), (QStringList{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")}));
    } else {
        QCOMPARE(numbers(), (QStringList{QStringLiteral("typed"), QString(), QString()}));
    }
}

void TestTerminalWidgetDrop::payloads_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("line");
    const QString unchanged = QStringLiteral("typed");
    QTest::newRow("nothing") << QByteArray() << unchanged;
    QTest::newRow("no items") << QByteArrayLiteral("[]") << unchanged;
    QTest::newRow("no JSON") << QByteArrayLiteral("1.2.3") << unchanged;
    QTest::newRow("no array") << QByteArrayLiteral(R"({"level":3,"line":1})") << unchanged;
    QTest::newRow("cut off") << QByteArrayLiteral(R"([{"level":3,"line":1})") << unchanged;
    QTest::newRow("any bytes") << QByteArray("\x00\xff\xfe[\x80", 5) << unchanged;
    QTest::newRow("elements that are no addresses") << QByteArrayLiteral("[1, null, [], {}]") << unchanged;
    QTest::newRow("unknown level") << QByteArrayLiteral(R"([{"level":9,"line":1}])") << unchanged;
    QTest::newRow("a line below zero") << QByteArrayLiteral(R"([{"level":3,"line":-1}])") << unchanged;
    QTest::newRow("an address") << QByteArrayLiteral(R"([{"level":3,"line":1}])") << QStringLiteral("1");
    QTest::newRow("an address behind none")
        << QByteArrayLiteral(R"([{}, {"level":3,"line":2}, {"level":3,"line":3}])") << QStringLiteral("2");
}

void TestTerminalWidgetDrop::payloads()
{
    QFETCH(QByteArray, data);
    QFETCH(QString, line);
    QMimeData mime;
    mime.setData(bench->mainData.getDndMimeType(), data);
    bench->backend.clearCalls();
    QDropEvent event(somewhere, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    bench->tool->dropEvent(&event);
    const bool taken = line != QLatin1String("typed");
    QCOMPARE(event.isAccepted(), taken);
    QCOMPARE(numbers().constFirst(), line);
    QCOMPARE(bench->backend.calls().isEmpty(), !taken);
}

void TestTerminalWidgetDrop::severalItemsSelectTheFirst()
{
    bench->backend.clearCalls();
    const auto data = payload({channel(4, 5, 6), channel(1, 2, 3), OrbItemId(OrbItemId::System)});
    QDropEvent event(somewhere, Qt::CopyAction, data.get(), Qt::LeftButton, Qt::NoModifier);
    bench->tool->dropEvent(&event);
    QVERIFY(event.isAccepted());
    QCOMPARE(numbers(), (QStringList{QStringLiteral("4"), QStringLiteral("5"), QStringLiteral("6")}));
    QCOMPARE(bench->backend.callsOf(QStringLiteral("itemNames")).size(), 1);
    QCOMPARE(bench->backend.callsOf(QStringLiteral("controllers")).size(), 1);
}

void TestTerminalWidgetDrop::everywhereOnTheTool_data()
{
    QTest::addColumn<QString>("place");
    QTest::newRow("console") << QStringLiteral("console");
    QTest::newRow("editor") << QStringLiteral("editor");
    QTest::newRow("field") << QStringLiteral("valueEdit");
    QTest::newRow("tool bar") << QStringLiteral("toolbar");
}

// The parts take text for themselves; an item goes to the tool, wherever it is dropped.
void TestTerminalWidgetDrop::everywhereOnTheTool()
{
    QFETCH(QString, place);
    if (place == QLatin1String("editor"))
        bench->send(KD::ShowEditor);
    auto *target = bench->tool->findChild<QWidget *>(place);
    QVERIFY(target && target->isVisible());
    if (auto *area = qobject_cast<QAbstractScrollArea *>(target))
        target = area->viewport();
    const auto data = payload({channel(1, 2, 3)});
    QDragEnterEvent enter(somewhere, Qt::CopyAction, data.get(), Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop(somewhere, Qt::CopyAction, data.get(), Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &drop);
    QVERIFY(drop.isAccepted());
    QCOMPARE(numbers(), (QStringList{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")}));
    QCOMPARE(bench->field("valueEdit")->text(), QString());
    QCOMPARE(bench->editor->toPlainText(), QString());
}

void TestTerminalWidgetDrop::whileARequestIsOut()
{
    bench->beginWaiting();
    const auto data = payload({channel(1, 2, 3)});
    QDropEvent event(somewhere, Qt::CopyAction, data.get(), Qt::LeftButton, Qt::NoModifier);
    bench->tool->dropEvent(&event);
    QCOMPARE(numbers(), (QStringList{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")}));
    QVERIFY(!bench->panel->isEnabled());
    bench->endWaiting();
    QVERIFY(bench->panel->isEnabled());
}

QTEST_MAIN(TestTerminalWidgetDrop)
#include "tst_terminal_widget_drop.moc"
