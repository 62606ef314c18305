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
    void init() { m_bench = std::make_unique<CommandFormBench>(); }
    void cleanup() { m_bench.reset(); }

    void choosingSendsTheConnection();
    void choosingAnEntryWithoutConnectionSendsAnEmptyText();
    void wantsStructureChangesOnly_data();
    void wantsStructureChangesOnly();
    void aStructureChangeOnlyPosts();
    void aStructureChangeFromAnotherThread();
    void customEvents_data();
    void customEvents();
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
    std::unique_ptr<CommandFormBench> m_bench;
};

// Choosing

void TestTerminalCommandGenerationControllers::choosingSendsTheConnection()
{
    m_bench->changeStructure();
    m_bench->observer.clear();
    m_bench->form->show();
    QTest::keyClick(m_bench->controllers(), Qt::Key_Down);
    QCOMPARE(m_bench->controllers()->currentText(), QStringLiteral("East"));
    QCOMPARE(m_bench->chosen(), QStringList{QStringLiteral("c1")});
    QTest::keyClick(m_bench->controllers(), Qt::Key_Down);
    QCOMPARE(m_bench->chosen(), (QStringList{QStringLiteral("c1"), QStringLiteral("c2")}));
    QCOMPARE(m_bench->observer.events().size(), std::size_t{2});
}

void TestTerminalCommandGenerationControllers::choosingAnEntryWithoutConnectionSendsAnEmptyText()
{
    m_bench->controllers()->addItem(QStringLiteral("nowhere"));
    m_bench->controllers()->setCurrentIndex(m_bench->controllers()->count() - 1);
    QCOMPARE(m_bench->chosen(), QStringList{QString()});
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
    QTEST(m_bench->form->wantsNotification(query), "wanted");
}

void TestTerminalCommandGenerationControllers::aStructureChangeOnlyPosts()
{
    m_bench->form->structureChanged(OrbItemId());
    QVERIFY(m_bench->backend.calls().isEmpty());
    QVERIFY(m_bench->observer.events().empty());
    QCoreApplication::sendPostedEvents(m_bench->form.get(), KD::CustomEventType);
    QVERIFY(m_bench->calls("controllers") > 0);
    QCOMPARE(m_bench->listed(),
             (QStringList{QStringLiteral("North"), QStringLiteral("East"), QStringLiteral("South")}));
}

void TestTerminalCommandGenerationControllers::aStructureChangeFromAnotherThread()
{
    const std::unique_ptr<QThread> other(QThread::create([this] {
        for (int i = 0; i < 20; ++i) {
            m_bench->form->structureChanged(OrbItemId());
            m_bench->backend.sendStructureChanged(OrbItemId());
        }
    }));
    other->start();
    QTRY_COMPARE(m_bench->listed().size(), CommandFormBench::threeControllers().size());
    QVERIFY(other->wait());
    CommandFormBench::settle();
    QVERIFY(!m_bench->backend.listedElsewhere);
    QCOMPARE(m_bench->chosen().constLast(), QStringLiteral("North"));
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

void TestTerminalCommandGenerationControllers::customEvents()
{
    QFETCH(int, type);
    QFETCH(int, subCode);
    KdCustomQEvent event(static_cast<QEvent::Type>(type), subCode);
    QCoreApplication::sendEvent(m_bench->form.get(), &event);
    QTEST(m_bench->calls("controllers") > 0, "refreshes");
    QTEST(!m_bench->observer.events().empty(), "refreshes");
}

void TestTerminalCommandGenerationControllers::subscribesAndUnsubscribes()
{
    m_bench->backend.sendStructureChanged(OrbItemId());
    CommandFormBench::settle();
    QCOMPARE(m_bench->listed().size(), CommandFormBench::threeControllers().size());

    m_bench->form.reset();
    m_bench->backend.clearCalls();
    m_bench->backend.sendStructureChanged(OrbItemId());
    CommandFormBench::settle();
    QVERIFY(m_bench->backend.calls().isEmpty());
}

void TestTerminalCommandGenerationControllers::aPostedRefreshDiesWithTheForm()
{
    m_bench->form->structureChanged(OrbItemId());
    m_bench->form.reset();
    CommandFormBench::settle();
    QVERIFY(m_bench->backend.calls().isEmpty());
    QVERIFY(m_bench->observer.events().empty());
}

// The list

void TestTerminalCommandGenerationControllers::refreshKeepsTheSelection()
{
    m_bench->changeStructure();
    m_bench->controllers()->setCurrentIndex(1);
    m_bench->setText("lineEdit", QStringLiteral("typed"));
    m_bench->backend.setControllers({{QStringLiteral("new"), QStringLiteral("Another")},
                                     {QStringLiteral("c9"), QStringLiteral("East")},
                                     {QStringLiteral("c2"), QStringLiteral("South")}});
    m_bench->changeStructure();
    QCOMPARE(m_bench->listed(),
             (QStringList{QStringLiteral("Another"), QStringLiteral("East"), QStringLiteral("South")}));
    QCOMPARE(m_bench->controllers()->currentIndex(), 1);
    QCOMPARE(m_bench->controllers()->currentData().toString(), QStringLiteral("c9"));
    // Selecting it tells its connection; the refresh ends with the text.
    QCOMPARE(m_bench->lastChosen(), (QStringList{QStringLiteral("c9"), QStringLiteral("East")}));
    // The address stays as it was.
    QCOMPARE(m_bench->text("lineEdit"), QStringLiteral("typed"));
    QCOMPARE(m_bench->calls("readItem"), 0);
    QCOMPARE(m_bench->calls("itemNames"), 0);
}

void TestTerminalCommandGenerationControllers::refreshSelectsTheLastOfEqualTexts()
{
    m_bench->changeStructure();
    m_bench->controllers()->setCurrentIndex(1);
    m_bench->backend.setControllers({{QStringLiteral("a"), QStringLiteral("East")},
                                     {QStringLiteral("b"), QStringLiteral("East")},
                                     {QStringLiteral("c"), QStringLiteral("West")}});
    m_bench->changeStructure();
    QCOMPARE(m_bench->controllers()->currentIndex(), 1);
    QCOMPARE(m_bench->controllers()->currentData().toString(), QStringLiteral("b"));
    QCOMPARE(m_bench->lastChosen(), (QStringList{QStringLiteral("b"), QStringLiteral("East")}));
}

void TestTerminalCommandGenerationControllers::refreshComparesWholeTexts()
{
    m_bench->changeStructure();
    m_bench->controllers()->setCurrentIndex(1);
    m_bench->backend.setControllers({{QStringLiteral("a"), QStringLiteral("Easter")},
                                     {QStringLiteral("b"), QStringLiteral("east")},
                                     {QStringLiteral("c1"), QStringLiteral("Eas")}});
    m_bench->changeStructure();
    QCOMPARE(m_bench->controllers()->currentText(), QStringLiteral("Easter"));
    QCOMPARE(m_bench->chosen().constLast(), QStringLiteral("Easter"));
}

void TestTerminalCommandGenerationControllers::refreshWithoutTheRememberedOneShowsTheFirstSystem()
{
    m_bench->backend.setItemNames(OrbItemId::System, {QStringLiteral("Sys.b"), QStringLiteral("Sys.a")});
    m_bench->setReading("c0", "Status.controllerName", QStringLiteral("South"));
    m_bench->setReading("c0", "Status.connectionName", QStringLiteral("read"));
    m_bench->setText("channelEdit", QStringLiteral("1"));
    m_bench->changeStructure();

    QCOMPARE(m_bench->listed(),
             (QStringList{QStringLiteral("North"), QStringLiteral("East"), QStringLiteral("South")}));
    QCOMPARE(m_bench->controllers()->itemData(2).toString(), QStringLiteral("c2"));
    QCOMPARE(m_bench->controllers()->currentText(), QStringLiteral("South"));
    QCOMPARE(m_bench->caption(), QStringLiteral("System Item"));
    QCOMPARE(m_bench->items()->currentText(), QStringLiteral("Sys.a"));
    QCOMPARE(m_bench->text("channelEdit"), QString());
    // Showing the system ends with the connection that was read, the refresh with the text shown.
    QCOMPARE(m_bench->lastChosen(), (QStringList{QStringLiteral("read"), QStringLiteral("South")}));
}

void TestTerminalCommandGenerationControllers::refreshWithoutAConnectionIndexShowsNoSystem()
{
    m_bench->backend.vanished = true;
    m_bench->setText("channelEdit", QStringLiteral("1"));
    m_bench->changeStructure();
    QCOMPARE(m_bench->backend.callsOf(QStringLiteral("connectionIndex")).constFirst().arguments,
             QStringList{QStringLiteral("c0")});
    QCOMPARE(m_bench->text("channelEdit"), QStringLiteral("1"));
    QCOMPARE(m_bench->calls("readItem"), 0);
    QCOMPARE(m_bench->calls("itemNames"), 0);
    QCOMPARE(m_bench->controllers()->currentText(), QStringLiteral("North"));
    QCOMPARE(m_bench->chosen().constLast(), QStringLiteral("North"));
}

void TestTerminalCommandGenerationControllers::refreshWithNoControllers()
{
    m_bench->changeStructure();
    m_bench->backend.setControllers({});
    m_bench->changeStructure();
    QCOMPARE(m_bench->listed(), QStringList{QStringLiteral("No connection")});
    QVERIFY(!m_bench->controllers()->currentData().isValid());
    QCOMPARE(m_bench->chosen().constLast(), QStringLiteral("No connection"));
    QCOMPARE(m_bench->calls("connectionIndex"), 0);
    QCOMPARE(m_bench->calls("readItem"), 0);
}

void TestTerminalCommandGenerationControllers::refreshFromNoConnectionToControllers()
{
    QCOMPARE(m_bench->listed(), QStringList{QStringLiteral("No connection")});
    m_bench->changeStructure();
    QCOMPARE(m_bench->controllers()->currentText(), QStringLiteral("North"));
    QCOMPARE(m_bench->chosen().constLast(), QStringLiteral("North"));
}

void TestTerminalCommandGenerationControllers::refreshOfThousands()
{
    constexpr int Count = 3000;
    QVector<QPair<QString, QString>> many;
    for (int i = 0; i < Count; ++i)
        many.append({QStringLiteral("c%1").arg(i), QStringLiteral("Controller %1").arg(i)});
    m_bench->backend.setControllers(many);
    m_bench->changeStructure();
    QCOMPARE(m_bench->controllers()->count(), Count);
    m_bench->controllers()->setCurrentIndex(Count - 1);
    m_bench->changeStructure();
    QCOMPARE(m_bench->controllers()->currentIndex(), Count - 1);
    QCOMPARE(m_bench->controllers()->itemData(1234).toString(), QStringLiteral("c1234"));
}

QTEST_MAIN(TestTerminalCommandGenerationControllers)
#include "tst_terminal_command_generation_controllers.moc"
