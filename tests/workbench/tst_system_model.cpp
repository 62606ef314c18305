#include "workbench/app/system_model.h"

#include "hostsdk/kd_plugin_common.h"
#include "tests/workbench/small_system.h"

#include <QAbstractItemModelTester>
#include <QIcon>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using workbench::SystemModel;

namespace
{

const QString Channel0 = QStringLiteral("/left/3:0:0:-1/4:0:1000:-1/5:0:4:-1/6:0:4:0");
const QString Channel1 = QStringLiteral("/left/3:0:0:-1/4:0:1000:-1/5:0:4:-1/6:0:4:1");

/// The model as indented names.
QStringList outline(const QAbstractItemModel &model, const QModelIndex &parent = {}, int depth = 0)
{
    QStringList lines;
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        lines.append(QString(depth, QLatin1Char(' ')) + index.data().toString());
        lines.append(outline(model, index, depth + 1));
    }
    return lines;
}

QString text(const SystemModel &model, const QString &key, int column)
{
    const QModelIndex index = model.indexOf(key);
    return index.sibling(index.row(), column).data().toString();
}

int readCalls(const RecordingBackend &backend)
{
    return backend.callsOf(QStringLiteral("readItem")).size();
}

} // namespace

class TestSystemModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsTheStructure()
    {
        SmallSystem system;
        const SystemModel model(system.mainData);
        const QStringList one = {QStringLiteral(" Line 0"),       QStringLiteral("  Crate 1000"),
                                 QStringLiteral("   Module 4"),   QStringLiteral("    Channel 0"),
                                 QStringLiteral("    Channel 1"), QStringLiteral(" Line 1"),
                                 QStringLiteral("  Module 7"),    QStringLiteral("   Channel 0")};
        QCOMPARE(outline(model),
                 QStringList(QStringLiteral("Left hall")) + one + QStringList(QStringLiteral("Right hall"))
                     + one);
        QCOMPARE(model.count(OrbItemId::System), 2);
        QCOMPARE(model.count(OrbItemId::Module), 4);
        QCOMPARE(model.count(OrbItemId::Channel), 6);
    }

    void keepsTheRulesOfAModel()
    {
        SmallSystem system;
        SystemModel model(system.mainData);
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
        system.setControllers(1);
        QTRY_COMPARE(resets.size(), 1);
        model.refresh({model.indexOf(Channel0)});
        QCOMPARE(model.rowCount(), 1);
    }

    void addressesAreComplete()
    {
        SmallSystem system;
        const SystemModel model(system.mainData);
        const QModelIndex line = model.index(1, 0, model.index(1, 0));
        const QModelIndex channel = model.index(0, 0, model.index(0, 0, line));
        const OrbItemId id = model.idAt(channel);
        QCOMPARE(id.type, OrbItemId::Channel);
        QCOMPARE(id.connectionName, QStringLiteral("right"));
        QCOMPARE(id.connection, 1);
        QCOMPARE(id.line, 1U);
        QCOMPARE(id.address, 7U);
        QCOMPARE(id.channel, 0);
        QCOMPARE(id.itemName, QString());
        QCOMPARE(model.indexOf(model.keyAt(channel)), channel);
        QVERIFY(!model.indexOf(model.keyAt(channel) + QStringLiteral("/more")).isValid());
        QCOMPARE(model.idAt({}).type, OrbItemId::Undefined);
    }

    void readsOnlyWhatItIsAskedFor()
    {
        SmallSystem system;
        SystemModel model(system.mainData);
        system.backend.clearCalls();
        QCOMPARE(text(model, Channel0, SystemModel::VoltageMeasureColumn), QString());
        QCOMPARE(readCalls(system.backend), 0);

        model.refresh({model.indexOf(Channel0)});
        const QVector<RecordedCall> calls = system.backend.callsOf(QStringLiteral("readItem"));
        QVERIFY(!calls.isEmpty());
        for (const RecordedCall &call : calls)
            QVERIFY2(call.arguments.constFirst().startsWith(QStringLiteral("left:0.4.0.")),
                     qUtf8Printable(call.arguments.constFirst()));
        QCOMPARE(text(model, Channel0, SystemModel::VoltageSetColumn), workbench::voltageText(1500));
        QCOMPARE(text(model, Channel0, SystemModel::VoltageMeasureColumn), workbench::voltageText(750.125));
        QCOMPARE(text(model, Channel0, SystemModel::CurrentMeasureColumn), workbench::currentText(2.5e-6));
        QCOMPARE(text(model, Channel0, SystemModel::StateColumn), QStringLiteral("ramp up"));
        QCOMPARE(text(model, Channel1, SystemModel::StateColumn), QString());
    }

    void statesAreMoreThanColour()
    {
        SmallSystem system;
        SystemModel model(system.mainData);
        model.refresh({model.indexOf(Channel1)});
        const QModelIndex name = model.indexOf(Channel1);
        const QModelIndex state = name.sibling(name.row(), SystemModel::StateColumn);
        QCOMPARE(state.data().toString(), QStringLiteral("off"));
        QVERIFY(!state.data(Qt::DecorationRole).value<QIcon>().isNull());
    }

    void reportsOnlyWhatChanged()
    {
        SmallSystem system;
        SystemModel model(system.mainData);
        const QModelIndexList rows = {model.indexOf(Channel0), model.indexOf(Channel1)};
        model.refresh(rows);
        QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
        model.refresh(rows);
        QVERIFY(changes.isEmpty());
        system.setItem(QStringLiteral("0.4.1.Status.voltageMeasure"), QStringLiteral("5"),
                       QStringLiteral("V"));
        model.refresh(rows);
        QCOMPARE(changes.size(), 1);
        QCOMPARE(changes.at(0).at(0).toModelIndex().row(), 1);
        QCOMPARE(text(model, Channel1, SystemModel::VoltageMeasureColumn), workbench::voltageText(5));
        model.refresh({QModelIndex()});
    }

    void followsTheStructure()
    {
        SmallSystem system;
        SystemModel model(system.mainData);
        QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
        system.setControllers(1);
        QTRY_COMPARE(model.rowCount(), 1);
        QCOMPARE(model.index(0, 0).data().toString(), QStringLiteral("Left hall"));
        system.setControllers(0);
        QTRY_COMPARE(model.rowCount(), 0);
        system.setControllers(2);
        QTRY_COMPARE(model.rowCount(), 2);
        QCOMPARE(resets.size(), 3);
    }

    void followsTheNumberOfChannels()
    {
        SmallSystem system;
        SystemModel model(system.mainData);
        system.setItem(QStringLiteral("0.4.Status.numberOfChannels"), QStringLiteral("3"));
        system.backend.sendStructureChanged(OrbItemId(OrbItemId::Module));
        QTRY_COMPARE(model.count(OrbItemId::Channel), 8);
    }

    void doesNotRebuildForNothing()
    {
        SmallSystem system;
        SystemModel model(system.mainData);
        QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
        // A new subscriber is told once of its own accord; then it is told of a change that changed nothing.
        for (int round = 0; round < 2; ++round) {
            system.backend.clearCalls();
            system.setControllers(2);
            QTRY_VERIFY(!system.backend.callsOf(QStringLiteral("crates")).isEmpty());
        }
        QCOMPARE(resets.size(), 0);
        system.setControllers(1);
        QTRY_COMPARE(model.rowCount(), 1);
        QCOMPARE(resets.size(), 1);
    }

    void badNumberOfChannels_data()
    {
        QTest::addColumn<QString>("number");
        QTest::addColumn<int>("channels"); // of both modules 4
        QTest::newRow("none") << QStringLiteral("0") << 0;
        QTest::newRow("negative") << QStringLiteral("-3") << 0;
        QTest::newRow("text") << QStringLiteral("many") << 0;
        QTest::newRow("too many") << QStringLiteral("2000000000") << 2 * 4096;
    }

    void badNumberOfChannels()
    {
        QFETCH(QString, number);
        QFETCH(int, channels);
        SmallSystem system;
        system.setItem(QStringLiteral("0.4.Status.numberOfChannels"), number);
        const SystemModel model(system.mainData);
        QCOMPARE(model.count(OrbItemId::Channel), channels + 2);
    }

    void dragsAddresses()
    {
        SmallSystem system;
        SystemModel model(system.mainData);
        const QModelIndex first = model.indexOf(Channel1);
        const QModelIndex second = model.index(1, 0);
        QVERIFY(model.flags(first) & Qt::ItemIsDragEnabled);
        QCOMPARE(model.mimeTypes(), QStringList(system.mainData.getDndMimeType()));
        // As a view passes them on: every cell of the rows.
        const std::unique_ptr<QMimeData> payload(
            model.mimeData({first, first.sibling(first.row(), SystemModel::StateColumn), second}));
        QVERIFY(payload);
        QVERIFY(payload->hasFormat(system.mainData.getDndMimeType()));
        QVector<OrbItemId> ids;
        QVERIFY(KdPluginCommon::parseDragAndDropString(payload.get(), ids));
        QCOMPARE(ids.size(), 2);
        QCOMPARE(ids.at(0).type, OrbItemId::Channel);
        QCOMPARE(ids.at(0).connection, 0);
        QCOMPARE(ids.at(0).line, 0U);
        QCOMPARE(ids.at(0).address, 4U);
        QCOMPARE(ids.at(0).channel, 1);
        QCOMPARE(ids.at(1).type, OrbItemId::System);
        QCOMPARE(ids.at(1).connection, 1);
        QVERIFY(!std::unique_ptr<QMimeData>(model.mimeData({})));
    }

    void leavesNoSubscriptionBehind()
    {
        SmallSystem system;
        {
            const SystemModel model(system.mainData);
            system.backend.sendStructureChanged(OrbItemId(OrbItemId::System));
        }
        system.backend.clearCalls();
        system.setControllers(1);
        QCoreApplication::processEvents();
        QVERIFY(system.backend.calls().isEmpty());
    }
};

QTEST_MAIN(TestSystemModel)

#include "tst_system_model.moc"
