#include "workbench/app/strip_chart_plot.h"

#include "tests/workbench/strip_chart_bench.h"

#include <QComboBox>
#include <QImage>
#include <QMouseEvent>
#include <QPainter>
#include <QSet>
#include <QTest>

#include <qwt_plot_curve.h>
#include <qwt_scale_map.h>

using workbench::StripChartPlot;

namespace
{

const QString Voltage = QStringLiteral("local 0.0.1 voltage");
const QString Current = QStringLiteral("local 0.0.1 current");

/// The line of measured values.
const QwtPlotCurve *curve(const StripChartPlot &plot, const QString &title)
{
    for (QwtPlotItem *item : plot.itemList(QwtPlotItem::Rtti_PlotCurve)) {
        if (item->title().text() == title && item->testItemAttribute(QwtPlotItem::Legend))
            return static_cast<QwtPlotCurve *>(item);
    }
    return nullptr;
}

/// Points of the measured voltage as they are drawn.
std::size_t pointsOf(const StripChartPlot &plot)
{
    const QwtPlotCurve *line = curve(plot, Voltage);
    return line == nullptr ? 0 : line->dataSize();
}

/// From the lowest to the highest value that the line is drawn at, as far as pixels tell.
QwtInterval drawnRange(const StripChartPlot &plot, const QString &title)
{
    const QwtPlotCurve *line = curve(plot, title);
    const QwtScaleMap values = plot.canvasMap(line->yAxis());
    QImage image(plot.canvas()->size(), QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    line->draw(&painter, plot.canvasMap(QwtPlot::xBottom), values, image.rect());
    painter.end();
    QwtInterval range;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y) != Qt::white)
                range |= QwtInterval(values.invTransform(y), values.invTransform(y));
        }
    }
    return range;
}

bool shorten(StripChartBench &bench, double duration)
{
    simulator::Fault fault;
    fault.kind = simulator::FaultKind::Short;
    fault.controller = QStringLiteral("local");
    fault.object = PlantBench::address(1);
    fault.duration = duration;
    return bench.service.cause(fault) == TarnResult::Success;
}

constexpr int FarOut = -20; // notches

double span(const StripChartPlot &plot)
{
    return plot.lastTime() - plot.firstTime();
}

} // namespace

class TestStripChartPlot : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void followsTheTime()
    {
        StripChartBench bench;
        bench.chart.add({PlantBench::channel(1)});
        bench.run(100);
        QVERIFY(qAbs(bench.plot().lastTime() - 100) < 1e-6);
        QCOMPARE(span(bench.plot()), 60.0);
    }

    void pausesAndGoesOn()
    {
        StripChartBench bench;
        bench.ramp();
        bench.tool("pause")->trigger();
        QVERIFY(!bench.plot().isFollowing());
        const double last = bench.plot().lastTime();
        bench.run(100);
        QCOMPARE(bench.plot().lastTime(), last);
        QVERIFY2(bench.chart.recorder().now() > 100, "it goes on recording");
        bench.tool("pause")->trigger();
        QVERIFY(bench.plot().isFollowing());
        QCOMPARE(bench.plot().lastTime(), bench.chart.recorder().now());
    }

    void showsEverything()
    {
        StripChartBench bench;
        bench.step(50);
        bench.ramp();
        bench.run(200);
        bench.tool("showAll")->trigger();
        QCOMPARE(bench.plot().firstTime(), 50.0);
        QCOMPARE(bench.plot().lastTime(), bench.chart.recorder().now());
        QVERIFY(bench.tool("pause")->isChecked());
    }

    void choosesHowMuchTime()
    {
        StripChartBench bench;
        bench.ramp();
        bench.run(100);
        auto *spans = bench.chart.findChild<QComboBox *>(QStringLiteral("span"));
        spans->setCurrentIndex(0);
        Q_EMIT spans->activated(0);
        QCOMPARE(span(bench.plot()), 10.0);
    }

    void zoomsAboutThePointer()
    {
        StripChartBench bench;
        bench.ramp();
        bench.tool("pause")->trigger();
        const QPoint place(bench.plot().canvas()->width() / 4, bench.plot().canvas()->height() / 2);
        const double under = bench.plot().invTransform(QwtPlot::xBottom, place.x());
        const double before = span(bench.plot());
        bench.turnWheel(2, Qt::NoModifier, place);
        QVERIFY(span(bench.plot()) < 0.7 * before);
        QVERIFY(qAbs(bench.plot().invTransform(QwtPlot::xBottom, place.x()) - under) < 0.02 * before);
    }

    void zoomsTheValues()
    {
        StripChartBench bench;
        bench.ramp();
        const double time = span(bench.plot());
        const QwtInterval volts = bench.plot().axisInterval(QwtPlot::yLeft);
        const QwtInterval amperes = bench.plot().axisInterval(QwtPlot::yRight);
        bench.turnWheel(2, Qt::ControlModifier, QPoint(100, 100));
        QCOMPARE(span(bench.plot()), time);
        QVERIFY(bench.plot().axisInterval(QwtPlot::yLeft).width() < 0.7 * volts.width());
        QVERIFY(bench.plot().axisInterval(QwtPlot::yRight).width() < 0.7 * amperes.width());
        bench.run(1); // and it stays
        QVERIFY(bench.plot().axisInterval(QwtPlot::yLeft).width() < 0.7 * volts.width());
    }

    void drawsWhatLeavesTheRangeThatWasZoomedTo()
    {
        StripChartBench bench;
        bench.ramp(); // 24 \u00b5A
        bench.turnWheel(2, Qt::ControlModifier, QPoint(100, 100));
        QVERIFY(shorten(bench, 0)); // and 1 mA flows
        bench.run(1);
        bench.turnWheel(FarOut, Qt::ControlModifier, QPoint(100, 100));
        QVERIFY(curve(bench.plot(), Current)->maxYValue() > 9e-4);
        const double highest = drawnRange(bench.plot(), Current).maxValue();
        QVERIFY2(highest > 9e-4, qPrintable(QString::number(highest)));
    }

    void drawsAnOlderPeakThatIsMovedIntoSight()
    {
        StripChartBench bench;
        bench.ramp();
        QVERIFY(shorten(bench, 0.5));
        bench.run(100); // out of sight
        QVERIFY(curve(bench.plot(), Current)->maxYValue() < 1e-4);
        bench.plot().moveBy(bench.plot().canvas()->contentsRect().width(), 1);
        QVERIFY(curve(bench.plot(), Current)->maxYValue() > 9e-4);
        bench.turnWheel(FarOut, Qt::ControlModifier, QPoint(100, 100));
        const double highest = drawnRange(bench.plot(), Current).maxValue();
        QVERIFY2(highest > 9e-4, qPrintable(QString::number(highest)));
    }

    void drawsOtherChannelsInARangeOfTheirOwn()
    {
        StripChartBench bench;
        bench.chart.add({PlantBench::channel(1, 3)}); // of 500 V
        bench.run(1);
        bench.turnWheel(2, Qt::ControlModifier, QPoint(100, 100));
        bench.chart.recorder().removeAll();
        bench.ramp(); // to 1200 V
        QVERIFY(bench.plot().axisInterval(QwtPlot::yLeft).contains(1200));
    }

    void partsTheLanesUntilTheyOverlap()
    {
        StripChartBench bench;
        bench.ramp();
        const auto isParted = [&bench] {
            const QwtPlotItemList markers = bench.plot().itemList(QwtPlotItem::Rtti_PlotMarker);
            return markers.size() == 1 && markers.constFirst()->isVisible();
        };
        QVERIFY(isParted());
        bench.turnWheel(2, Qt::ControlModifier, QPoint(100, 100));
        QVERIFY(isParted());
        QVERIFY(shorten(bench, 0)); // the current goes up to where the voltages are
        bench.run(1);
        QVERIFY(!isParted());
        QTest::keyClick(bench.plot().canvas(), Qt::Key_End);
        QVERIFY(isParted());
    }

    void showsAllValuesAgainAtTheEnd()
    {
        StripChartBench bench;
        bench.ramp();
        const QwtInterval volts = bench.plot().axisInterval(QwtPlot::yLeft);
        bench.turnWheel(2, Qt::ControlModifier, QPoint(100, 100));
        QVERIFY(bench.plot().isFollowing());
        QVERIFY(bench.plot().axisInterval(QwtPlot::yLeft) != volts);
        QTest::keyClick(bench.plot().canvas(), Qt::Key_End);
        QVERIFY(bench.plot().isFollowing());
        QCOMPARE(bench.plot().axisInterval(QwtPlot::yLeft), volts);
    }

    void drawsTheLinesOfMarksSharp()
    {
        StripChartBench bench;
        bench.ramp(); // with the mark of its end
        QSet<QRgb> colours;
        for (const QwtPlotItem *item : bench.plot().itemList()) {
            if (item->rtti() <= QwtPlotItem::Rtti_PlotUserItem)
                continue;
            QImage image(bench.plot().canvas()->size(), QImage::Format_RGB32);
            image.fill(Qt::white);
            QPainter painter(&image);
            item->draw(&painter, bench.plot().canvasMap(QwtPlot::xBottom),
                       bench.plot().canvasMap(QwtPlot::yLeft), image.rect());
            painter.end();
            for (int y = image.height() / 2; y < image.height(); ++y) { // below all words
                for (int x = 0; x < image.width(); ++x)
                    colours.insert(image.pixel(x, y));
            }
        }
        QCOMPARE(colours.size(), 2); // the ground and the line, and nothing between them
    }

    void zoomsIntoAFrame()
    {
        StripChartBench bench;
        bench.ramp();
        QWidget *canvas = bench.plot().canvas();
        const QPoint from(canvas->width() / 10, canvas->height() / 4);
        const QPoint to(canvas->width() / 2, canvas->height() / 2);
        const double first = bench.plot().invTransform(QwtPlot::xBottom, from.x());
        const double last = bench.plot().invTransform(QwtPlot::xBottom, to.x());
        const double high = bench.plot().invTransform(QwtPlot::yLeft, from.y());
        QTest::mousePress(canvas, Qt::LeftButton, {}, from);
        QMouseEvent move(QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(canvas, &move);
        QTest::mouseRelease(canvas, Qt::LeftButton, {}, to);
        QVERIFY(!bench.plot().isFollowing());
        const double pixel = 2 * (last - first) / (to.x() - from.x());
        QVERIFY(qAbs(bench.plot().firstTime() - first) < pixel);
        QVERIFY(qAbs(bench.plot().lastTime() - last) < pixel);
        QVERIFY(qAbs(bench.plot().axisInterval(QwtPlot::yLeft).maxValue() - high) < 20);
    }

    void takesAClickForNoFrame()
    {
        StripChartBench bench;
        bench.ramp();
        QTest::mouseClick(bench.plot().canvas(), Qt::LeftButton, {}, QPoint(100, 100));
        QVERIFY(bench.plot().isFollowing());
    }

    void movesWithThePointer_data()
    {
        QTest::addColumn<int>("button");
        QTest::addColumn<int>("modifier");
        QTest::newRow("middle button") << int(Qt::MiddleButton) << int(Qt::NoModifier);
        QTest::newRow("Shift") << int(Qt::LeftButton) << int(Qt::ShiftModifier);
    }

    void movesWithThePointer()
    {
        QFETCH(int, button);
        QFETCH(int, modifier);
        StripChartBench bench;
        bench.ramp();
        QWidget *canvas = bench.plot().canvas();
        const double last = bench.plot().lastTime();
        const double before = span(bench.plot());
        const int quarter = canvas->contentsRect().width() / 4;
        const auto key = Qt::KeyboardModifiers(modifier);
        QTest::mousePress(canvas, Qt::MouseButton(button), key, QPoint(200, 100));
        QMouseEvent move(QEvent::MouseMove, QPoint(200 + quarter, 100), Qt::NoButton, Qt::MouseButton(button),
                         key);
        QCoreApplication::sendEvent(canvas, &move);
        QTest::mouseRelease(canvas, Qt::MouseButton(button), key, QPoint(200 + quarter, 100));
        QVERIFY(!bench.plot().isFollowing());
        QVERIFY(qAbs(bench.plot().lastTime() - (last - before / 4)) < before / 100);
        QVERIFY(qAbs(span(bench.plot()) - before) < 1e-9);
    }

    void obeysKeys()
    {
        StripChartBench bench;
        bench.ramp();
        QWidget *canvas = bench.plot().canvas();
        QTest::keyClick(canvas, Qt::Key_Space);
        QVERIFY(!bench.plot().isFollowing());
        const double first = bench.plot().firstTime();
        QTest::keyClick(canvas, Qt::Key_Left);
        QVERIFY(bench.plot().firstTime() < first);
        QTest::keyClick(canvas, Qt::Key_Right);
        QVERIFY(qAbs(bench.plot().firstTime() - first) < 1e-6);
        const double before = span(bench.plot());
        QTest::keyClick(canvas, Qt::Key_Plus);
        QVERIFY(span(bench.plot()) < before);
        QTest::keyClick(canvas, Qt::Key_Minus);
        QVERIFY(qAbs(span(bench.plot()) - before) < 1e-6);
        QTest::keyClick(canvas, Qt::Key_Home);
        QCOMPARE(bench.plot().firstTime(), 0.0);
        QCOMPARE(bench.plot().lastTime(), 3.0);
        QTest::keyClick(canvas, Qt::Key_End);
        QVERIFY(bench.plot().isFollowing());
    }

    void zoomsNeitherToNothingNorToAYear()
    {
        StripChartBench bench;
        bench.ramp();
        bench.tool("pause")->trigger();
        for (int turn = 0; turn < 300; ++turn)
            bench.plot().zoomTime(0.5, 1);
        QVERIFY(qAbs(span(bench.plot()) - StripChartPlot::ShortestSpan) < 1e-9);
        for (int turn = 0; turn < 300; ++turn)
            bench.plot().zoomTime(2, 1);
        QVERIFY(span(bench.plot()) <= 2 * workbench::ChannelRecord::Span + 1e-9);
    }

    void drawsNothingWhileItIsHidden()
    {
        StripChartBench bench;
        bench.ramp();
        bench.chart.hide();
        const std::size_t before = pointsOf(bench.plot());
        for (int number = 0; number < 20; ++number) {
            bench.step(0.5);
            bench.set(PlantBench::channel(1), "Control.voltageSet", QString::number(number * 100));
            bench.watcher.poll();
        }
        QCOMPARE(pointsOf(bench.plot()), before);
        QVERIFY2(bench.chart.recorder().at(0).samples().size() > 25, "but it records");
        bench.chart.show();
        QVERIFY(pointsOf(bench.plot()) > before);
    }
};

QTEST_MAIN(TestStripChartPlot)

#include "tst_strip_chart_plot.moc"
