#include "command_terminal/terminal_command_generation.h"
#include "hostsdk/kd_custom_q_event.h"
#include "tests/command_terminal/command_form_bench.h"

#include <QThread>
#include <QtTest>

#include <memory>

/// The list of the controllers, and the notifications that refresh it.
class TestTerminalCommandGenerationControllers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { bench = std::make_unique<CommandFormBench>(); }
    void cleanup() { bench.reset(); }

    void choosingSendsTheConnection();
    void choosingAnEntryWithoutConnectionSendsAnEmptyText();
    void wantsStructureChangesOnly_data();
    void wantsStructureChangesOnly();
    void aStructureChangeOnlyPosts();
    void aStructureChangeFromAnotherThread();
    void customEvents_data();
    void customEvents();
    void aForeignEventOfThatNumber();
    void subscribesAndUnsubscribes();
    void aPostedRefreshDiesWithTheForm();
    void refreshKeepsTheSelection();
    void refreshSelectsTheLastOfEqualTexts();
    void refreshComparesWholeTexts();
    void refreshWithoutTheRememberedOneShowsTheFirstSystem();
    void refreshWithoutAConnectionIndexShowsNoSystem();
    void refreshWithNoControllers();
    void refreshFromNoConnectionToControllers();
    void refreshOfThousands();

private:
    std::unique_ptr<CommandFormBench> bench;
};

// Choosing

void TestTerminalCommandGenerationControllers::choosingSendsTheConnection()
{
    bench->changeStructure();
    bench->observer.clear();
    bench->form->show();
    QTest::keyClick(bench->controllers(), Qt::Key_Down);
    QCOMPARE(bench->controllers()->currentText(), QStringLiteral("East"));
    QCOMPARE(bench->chosen(), QStringList{QStringLiteral("c1")});
    QTest::keyClick(bench->controllers(), Qt::Key_Down);
    QCOMPARE(bench->chosen(), (QStringList{QStringLiteral("c1"), QStringLiteral("c2")}));
    QCOMPARE(bench->observer.events().size(), std::size_t{2});
}

void TestTerminalCommandGenerationControllers::choosingAnEntryWithoutConnectionSendsAnEmptyText()
{
    bench->controllers()->addItem(QStringLiteral("nowhere"));
    bench->controllers()->setCurrentIndex(bench->controllers()->count() - 1);
    QCOMPARE(bench->chosen(), QStringList{QString()});
}

// Notifications

void TestTerminalCommandGenerationControllers::wantsStructureChangesOnly_data()
{
    QTest::addColumn<quint32>("first");
    QTest::addColumn<quint32>("second");
    QTest::addColumn<quint32>("third");
    QTest::addColumn<quint32>("fourth");
    QTest::addColumn<bool>("wanted");
    QTest::newRow("structure") << 0U << 0U << 1U << 0U << true;
    QTest::newRow("structure, other words set") << 7U << 8U << 1U << 9U << true;
    QTest::newRow("zero") << 0U << 0U << 0U << 0U << false;
    QTest::newRow("two") << 0U << 0U << 2U << 0U << false;
    QTest::newRow("three") << 0U << 0U << 3U << 0U << false;
    QTest::newRow("all ones") << 0U << 0U << 0xFFFFFFFFU << 0U << false;
    QTest::newRow("one in the other words") << 1U << 1U << 0U << 1U << false;
}

void TestTerminalCommandGenerationControllers::wantsStructureChangesOnly()
{
    QFETCH(quint32, first);
    QFETCH(quint32, second);
    QFETCH(quint32, third);
    QFETCH(quint32, fourth);
    DlNotificationQuery query{first, second, third, fourth};
    QTEST(bench->form->wantsNotification(query), "wanted");
}

void TestTerminalCommandGenerationControllers::aStructureChangeOnlyPosts()
{
    bench->form->structureChanged(OrbItemId());
    QVERIFY(bench->backend.calls().isEmpty());
    QVERIFY(bench->observer.events().empty());
    QCoreApplication::sendPostedEvents(bench->form.get(), KD::CustomEventType);
    QVERIFY(bench->calls("controllers") > 0);
    QCOMPARE(bench->listed(),
             (QStringList{QStringLiteral("North"), QStringLiteral("East"), QStringLiteral("South")}));
}

void TestTerminalCommandGenerationControllers::aStructureChangeFromAnotherThread()
{
    const std::unique_ptr<QThread> other(QThread::create([this] {
        for (int i = 0; i < 20; ++i) {
            bench->form->structureChanged(OrbItemId());
            bench->backend.sendStructureChanged(OrbItemId());
        }
    }));
    other->start();
    QTRY_COMPARE(bench->listed().size(), CommandFormBench::threeControllers().size());
    QVERIFY(other->wait());
    CommandFormBench::settle();
    QVERIFY(!bench->backend.listedElsewhere);
    QCOMPARE(bench->chosen().constLast(), QStringLiteral("North"));
}

void TestTerminalCommandGenerationControllers::customEvents_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("subCode");
    QTest::addColumn<bool>("refreshes");
    QTest::newRow("the pair") << 1200 << 211 << true;
    QTest::newRow("sub-code below") << 1200 << 210 << false;
    QTest::newRow("sub-code above") << 1200 << 212 << false;
    QTest::newRow("no sub-code") << 1200 << 0 << false;
    QTest::newRow("type below") << 1199 << 211 << false;
    QTest::newRow("type above") << 1201 << 211 << false;
}

void TestTerminalCommandGenerationControllers::aForeignEventOfThatNumber()
{
    QEvent event(static_cast<QEvent::Type>(KD::CustomEventType));
    QCoreApplication::sendEvent(bench->form.get(), &event);
    QCOMPARE(bench->calls("controllers"), 0);
    QVERIFY(bench->observer.events().empty());
}

void TestTerminalCommandGenerationControllers::customEvents()
{
    QFETCH(int, type);
    QFETCH(int, subCode);
    KdCustomQEvent event(static_cast<QEvent::Type>(type), subCode);
    QCoreApplication::sendEvent(bench->form.get(), &event);
    QTEST(bench->calls("controllers") > 0, "refreshes");
    QTEST(!bench->observer.events().empty(), "refreshes");
}

void TestTerminalCommandGenerationControllers::subscribesAndUnsubscribes()
{
    bench->backend.sendStructureChanged(OrbItemId());
    CommandFormBench::settle();
    QCOMPARE(bench->listed().size(), CommandFormBench::threeControllers().size());

    bench->form.reset();
    bench->backend.clearCalls();
    bench->backend.sendStructureChanged(OrbItemId());
    CommandFormBench::settle();
    QVERIFY(bench->backend.calls().isEmpty());
}

void TestTerminalCommandGenerationControllers::aPostedRefreshDiesWithTheForm()
{
    bench->form->structureChanged(OrbItemId());
    bench->form.reset();
    CommandFormBench::settle();
    QVERIFY(bench->backend.calls().isEmpty());
    QVERIFY(bench->observer.events().empty());
}

// The list

void TestTerminalCommandGenerationControllers::refreshKeepsTheSelection()
{
    bench->changeStructure();
    bench->controllers()->setCurrentIndex(1);
    bench->setText("lineEdit", QStringLiteral("typed"));
    bench->backend.setControllers({{QStringLiteral("new"), QStringLiteral("Another")},
                                   {QStringLiteral("c9"), QStringLiteral("East")},
                                   {QStringLiteral("c2"), QStringLiteral("South")}});
    bench->changeStructure();
    QCOMPARE(bench->listed(),
             (QStringList{QStringLiteral("Another"), QStringLiteral("East"), QStringLiteral("South")}));
    QCOMPARE(bench->controllers()->currentIndex(), 1);
    QCOMPARE(bench->controllers()->currentData().toString(), QStringLiteral("c9"));
    // Selecting it tells its connection; the refresh ends with the text.
    QCOMPARE(bench->lastChosen(), (QStringList{QStringLiteral("c9"), QStringLiteral("East")}));
    // The address stays as it was.
    QCOMPARE(bench->text("lineEdit"), QStringLiteral("typed"));
    QCOMPARE(bench->calls("readItem"), 0);
    QCOMPARE(bench->calls("itemNames"), 0);
}

void TestTerminalCommandGenerationControllers::refreshSelectsTheLastOfEqualTexts()
{
    bench->changeStructure();
    bench->controllers()->setCurrentIndex(1);
    bench->backend.setControllers({{QStringLiteral("a"), QStringLiteral("East")},
                                   {QStringLiteral("b"), QStringLiteral("East")},
                                   {QStringLiteral("c"), QStringLiteral("West")}});
    bench->changeStructure();
    QCOMPARE(bench->controllers()->currentIndex(), 1);
    QCOMPARE(bench->controllers()->currentData().toString(), QStringLiteral("b"));
    QCOMPARE(bench->lastChosen(), (QStringList{QStringLiteral("b"), QStringLiteral("East")}));
}

void TestTerminalCommandGenerationControllers::refreshComparesWholeTexts()
{
    bench->changeStructure();
    bench->controllers()->setCurrentIndex(1);
    bench->backend.setControllers({{QStringLiteral("a"), QStringLiteral("Easter")},
                                   {QStringLiteral("b"), QStringLiteral("east")},
                                   {QStringLiteral("c1"), QStringLiteral("Eas")}});
    bench->changeStructure();
    QCOMPARE(bench->controllers()->currentText(), QStringLiteral("Easter"));
    QCOMPARE(bench->chosen().constLast(), QStringLiteral("Easter"));
}

void TestTerminalCommandGenerationControllers::refreshWithoutTheRememberedOneShowsTheFirstSystem()
{
    bench->backend.setItemNames(OrbItemId::System, {QStringLiteral("Sys.b"), QStringLiteral("Sys.a")});
    bench->setReading("c0", "Status.controllerName", QStringLiteral("South"));
    bench->setReading("c0", "Status.connectionName", QStringLiteral("read"));
    bench->setText("channelEdit", QStringLiteral("1"));
    bench->changeStructure();

    QCOMPARE(bench->listed(),
             (QStringList{QStringLiteral("North"), QStringLiteral("East"), QStringLiteral("South")}));
    QCOMPARE(bench->controllers()->itemData(2).toString(), QStringLiteral("c2"));
    QCOMPARE(bench->controllers()->currentText(), QStringLiteral("South"));
    QCOMPARE(bench->caption(), QStringLiteral("System Item"));
    QCOMPARE(bench->items()->currentText(), QStringLiteral("Sys.a"));
    QCOMPARE(bench->text("channelEdit"), QString());
    // Showing the system ends with the connection that was read, the refresh with the text shown.
    QCOMPARE(bench->lastChosen(), (QStringList{QStringLiteral("read"), QStringLiteral("South")}));
}

void TestTerminalCommandGenerationControllers::refreshWithoutAConnectionIndexShowsNoSystem()
{
    bench->backend.vanished = true;
    bench->setText("channelEdit", QStringLiteral("1"));
    bench->changeStructure();
    QCOMPARE(bench->backend.callsOf(QStringLiteral("connectionIndex")).constFirst().arguments,
             QStringList{QStringLiteral("c0")});
    QCOMPARE(bench->text("channelEdit"), QStringLiteral("1"));
    QCOMPARE(bench->calls("readItem"), 0);
    QCOMPARE(bench->calls("itemNames"), 0);
    QCOMPARE(bench->controllers()->currentText(), QStringLiteral("North"));
    QCOMPARE(bench->chosen().constLast(), QStringLiteral("North"));
}

void TestTerminalCommandGenerationControllers::refreshWithNoControllers()
{
    bench->changeStructure();
    bench->backend.setControllers({});
    bench->changeStructure();
    QCOMPARE(bench->listed(), QStringList{QStringLiteral("No connection")});
    QVERIFY(!bench->controllers()->currentData().isValid());
    QCOMPARE(bench->chosen().constLast(), QStringLiteral("No connection"));
    QCOMPARE(bench->calls("connectionIndex"), 0);
    QCOMPARE(bench->calls("readItem"), 0);
}

void TestTerminalCommandGenerationControllers::refreshFromNoConnectionToControllers()
{
    QCOMPARE(bench->listed(), QStringList{QStringLiteral("No connection")});
    bench->changeStructure();
    QCOMPARE(bench->controllers()->currentText(), QStringLiteral("North"));
    QCOMPARE(bench->chosen().constLast(), QStringLiteral("North"));
}

void TestTerminalCommandGenerationControllers::refreshOfThousands()
{
    constexpr int Count = 3000;
    QVector<QPair<QString, QString>> many;
    for (int i = 0; i < Count; ++i)
        many.append({QStringLiteral("c%1").arg(i), QStringLiteral("Controller %1").arg(i)});
    bench->backend.setControllers(many);
    bench->changeStructure();
    QCOMPARE(bench->controllers()->count(), Count);
    bench->controllers()->setCurrentIndex(Count - 1);
    bench->changeStructure();
    QCOMPARE(bench->controllers()->currentIndex(), Count - 1);
    QCOMPARE(bench->controllers()->itemData(1234).toString(), QStringLiteral("c1234"));
}

QTEST_MAIN(TestTerminalCommandGenerationControllers)
#include "tst_terminal_command_generation_controllers.moc"
