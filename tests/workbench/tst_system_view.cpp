#include "workbench/app/system_view.h"

#include "tests/workbench/small_system.h"
#include "workbench/app/system_model.h"
#include "workbench/app/system_state.h"

#include <QHeaderView>
#include <QLineEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <QStyle>
#include <QTest>
#include <QVBoxLayout>

using workbench::SystemModel;
using workbench::SystemView;

namespace
{

const QString LeftModule = QStringLiteral("/left/3:0:0:-1/4:0:1000:-1/5:0:4:-1");
const QString LeftChannel = LeftModule + QStringLiteral("/6:0:4:1");
const QString RightModule = QStringLiteral("/right/3:0:0:-1/4:0:1000:-1/5:0:4:-1");

QPoint middleOf(const SystemView &view, const QModelIndex &index)
{
    return view.visualRect(index).center();
}

OrbItemId::Type levelIn(const QSignalSpy &spy, int call)
{
    return spy.at(call).at(0).value<OrbItemId>().type;
}

} // namespace

class TestSystemView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { qRegisterMetaType<OrbItemId>("OrbItemId"); }

    void readsOnlyWhatIsInSight()
    {
        SmallSystem system;
        system.setItem(QStringLiteral("0.4.Status.numberOfChannels"), QStringLiteral("500"));
        SystemModel model(system.mainData);
        SystemView view(model);
        view.resize(600, 10 * view.fontMetrics().height());
        system.backend.clearCalls();
        view.show();
        QTRY_VERIFY(!system.backend.callsOf(QStringLiteral("readItem")).isEmpty());
        QVERIFY(view.visibleRows().size() < 20);
        const auto isRead = [&](const QString &prefix) {
            const QVector<RecordedCall> calls = system.backend.callsOf(QStringLiteral("readItem"));
            return std::any_of(calls.begin(), calls.end(), [&](const RecordedCall &call) {
                return call.arguments.constFirst().startsWith(prefix);
            });
        };
        QVERIFY(isRead(QStringLiteral("left:0.4.0.")));
        QVERIFY(!isRead(QStringLiteral("left:0.4.300.")));

        view.scrollTo(model.indexOf(LeftModule + QStringLiteral("/6:0:4:300")), SystemView::PositionAtTop);
        QTRY_VERIFY(isRead(QStringLiteral("left:0.4.300.")));
        QVERIFY(!isRead(QStringLiteral("left:0.4.400.")));
    }

    void keepsReadingWhileItIsShown()
    {
        SmallSystem system;
        SystemModel model(system.mainData);
        SystemView view(model);
        view.resize(600, 600);
        view.show();
        const QModelIndex channel = model.indexOf(LeftChannel);
        const QModelIndex voltage = channel.sibling(channel.row(), SystemModel::VoltageMeasureColumn);
        for (int volts : {10, 20}) {
            system.setItem(QStringLiteral("0.4.1.Status.voltageMeasure"), QString::number(volts),
                           QStringLiteral("V"));
            QTRY_COMPARE(voltage.data().toString(), workbench::voltageText(volts));
        }
        view.hide();
        QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
        QTimer probe;
        probe.setSingleShot(true);
        QSignalSpy elapsed(&probe, &QTimer::timeout);
        system.setItem(QStringLiteral("0.4.1.Status.voltageMeasure"), QStringLiteral("30"),
                       QStringLiteral("V"));
        probe.start(2 * SystemView::RefreshInterval);
        QTRY_COMPARE(elapsed.size(), 1);
        QVERIFY(changes.isEmpty());
    }

    void choosesWithPointerAndKeys()
    {
        SmallSystem system;
        SystemModel model(system.mainData);
        SystemView view(model);
        view.resize(600, 600);
        view.show();
        QSignalSpy chosen(&view, &SystemView::itemChosen);
        const QModelIndex module = model.indexOf(LeftModule);
        QVERIFY(view.isExpanded(module));
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, middleOf(view, module));
        QCOMPARE(chosen.size(), 1);
        QCOMPARE(chosen.at(0).at(0).value<OrbItemId>(), model.idAt(module));
        QTest::keyClick(&view, Qt::Key_Down);
        QCOMPARE(chosen.size(), 2);
        QCOMPARE(levelIn(chosen, 1), OrbItemId::Channel);
    }

    void showsWhetherItHasTheFocus()
    {
        SmallSystem system;
        SystemModel model(system.mainData);
        QWidget window;
        auto *column = new QVBoxLayout(&window);
        auto *view = new SystemView(model, &window);
        auto *elsewhere = new QLineEdit(&window);
        column->addWidget(view);
        column->addWidget(elsewhere);
        window.resize(600, 600);
        window.show();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        const QModelIndex module = model.indexOf(LeftModule);
        view->setCurrentIndex(module);
        const auto selectionColour = [&] {
            const QRect row = view->visualRect(module);
            return view->viewport()->grab().toImage().pixelColor(row.right() - 1, row.center().y());
        };
        view->setFocus();
        const QColor focused = selectionColour();
        QCOMPARE(focused.hue(), view->palette().color(QPalette::Active, QPalette::Highlight).hue());
        elsewhere->setFocus();
        QVERIFY(selectionColour().saturation() < focused.saturation());
    }

    void choosesTheSameObjectAgain()
    {
        SmallSystem system;
        SystemModel model(system.mainData);
        SystemView view(model);
        view.resize(600, 600);
        view.show();
        QSignalSpy chosen(&view, &SystemView::itemChosen);
        const QPoint place = middleOf(view, model.indexOf(LeftChannel));
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, place);
        QCOMPARE(chosen.size(), 1);
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, place);
        QCOMPARE(chosen.size(), 2);
        QCOMPARE(chosen.at(1), chosen.at(0));
    }

    void activates()
    {
        SmallSystem system;
        SystemModel model(system.mainData);
        SystemView view(model);
        view.resize(600, 600);
        view.show();
        view.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&view));
        QSignalSpy activated(&view, &SystemView::itemActivated);
        const QModelIndex channel = model.indexOf(LeftChannel);
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, middleOf(view, channel));
        QVERIFY(activated.isEmpty());
        QTest::mouseDClick(view.viewport(), Qt::LeftButton, {}, middleOf(view, channel));
        QCOMPARE(activated.size(), 1);
        QCOMPARE(activated.at(0).at(0).value<OrbItemId>(), model.idAt(channel));
        QTest::keyClick(&view, Qt::Key_Return);
        QCOMPARE(activated.size(), 2);
    }

    void showsEveryColumnAtItsOwnSize()
    {
        SmallSystem system;
        system.setItem(QStringLiteral("0.4.Status.numberOfChannels"), QStringLiteral("500"));
        SystemModel model(system.mainData);
        SystemView view(model);
        view.resize(view.sizeHint());
        view.show();
        QTRY_VERIFY(view.verticalScrollBar()->isVisible());
        QVERIFY(!view.horizontalScrollBar()->isVisible());
    }

    void keepsWordsAndNumbersApart()
    {
        SmallSystem system;
        SystemModel model(system.mainData);
        SystemView view(model);
        // A number at the right edge of its column would touch a word at the left edge of the next.
        QHeaderView &header = *view.header();
        for (int place = 1; place < header.count(); ++place) {
            const auto alignment = [&](int at) {
                const QVariant value =
                    model.headerData(header.logicalIndex(at), Qt::Horizontal, Qt::TextAlignmentRole);
                return value.isValid() ? value.toInt() : int(Qt::AlignLeft);
            };
            QVERIFY(!((alignment(place - 1) & Qt::AlignRight) && (alignment(place) & Qt::AlignLeft)));
        }
        const int width = view.columnWidth(SystemModel::StateColumn);
        const int words =
            view.fontMetrics().horizontalAdvance(workbench::stateText(workbench::SystemState::Emergency));
        QVERIFY(width > words + view.style()->pixelMetric(QStyle::PM_SmallIconSize));
    }

    void opensTheFirstModuleOnly()
    {
        SmallSystem system;
        OrbItemId second(OrbItemId::Module);
        second.address = 5;
        OrbItemId first(OrbItemId::Module);
        first.address = 4;
        system.backend.setCrateModules({first, second});
        SystemModel model(system.mainData);
        const SystemView view(model);
        QVERIFY(view.isExpanded(model.indexOf(LeftModule)));
        QVERIFY(!view.isExpanded(model.indexOf(LeftModule).siblingAtRow(1)));
    }

    void survivesAChangeOfStructure()
    {
        SmallSystem system;
        SystemModel model(system.mainData);
        SystemView view(model);
        view.resize(600, 600);
        view.show();
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, middleOf(view, model.indexOf(LeftChannel)));
        view.collapse(model.indexOf(RightModule));
        QSignalSpy chosen(&view, &SystemView::itemChosen);

        system.setControllers(1); // the right one vanishes
        QTRY_COMPARE(model.rowCount(), 1);
        QCOMPARE(view.currentIndex(), model.indexOf(LeftChannel));
        QCOMPARE(view.selectionModel()->selectedRows(), QModelIndexList({model.indexOf(LeftChannel)}));
        QVERIFY(view.isExpanded(model.indexOf(LeftModule)));

        system.setControllers(2); // and comes back, as it was
        QTRY_COMPARE(model.rowCount(), 2);
        QVERIFY(!view.isExpanded(model.indexOf(RightModule)));
        QVERIFY(view.isExpanded(model.indexOf(RightModule).parent()));
        QCOMPARE(view.currentIndex(), model.indexOf(LeftChannel));
        QVERIFY2(chosen.isEmpty(), "nobody chose anything");
    }

    void survivesThatTheChosenObjectVanishes()
    {
        SmallSystem system;
        SystemModel model(system.mainData);
        SystemView view(model);
        view.resize(600, 600);
        view.show();
        view.setCurrentIndex(model.indexOf(RightModule));
        QSignalSpy chosen(&view, &SystemView::itemChosen);
        system.setControllers(1);
        QTRY_COMPARE(model.rowCount(), 1);
        QVERIFY(view.selectionModel()->selectedRows().isEmpty());
        system.setControllers(0);
        QTRY_COMPARE(model.rowCount(), 0);
        view.refreshVisible();
        QVERIFY(view.visibleRows().isEmpty());
        QVERIFY(chosen.isEmpty());
    }
};

QTEST_MAIN(TestSystemView)

#include "tst_system_view.moc"
