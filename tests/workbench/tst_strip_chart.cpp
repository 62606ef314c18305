#include "workbench/app/strip_chart.h"

#include "tests/workbench/strip_chart_bench.h"
#include "workbench/hostkit/drag_payload.h"

#include <QDropEvent>
#include <QFile>
#include <QFileDialog>
#include <QImage>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
#include <QPainter>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <qwt_legend.h>
#include <qwt_legend_label.h>
#include <qwt_plot_curve.h>
#include <qwt_scale_map.h>
#include <qwt_scale_widget.h>

#include <algorithm>
#include <cmath>

using workbench::ChannelRecorder;
using workbench::StripChart;
using workbench::StripChartPlot;

namespace
{

enum Line
{
    Measured,
    Set,
    Limit
};

QwtPlotCurve *curve(const StripChartPlot &plot, const QString &title, Line line = Measured)
{
    QVector<QwtPlotCurve *> found;
    for (QwtPlotItem *item : plot.itemList(QwtPlotItem::Rtti_PlotCurve)) {
        if (item->title().text() != title)
            continue;
        if (item->testItemAttribute(QwtPlotItem::Legend) == (line == Measured))
            found.append(static_cast<QwtPlotCurve *>(item));
    }
    return found.value(line == Limit ? 1 : 0);
}

const QString Voltage = QStringLiteral("local 0.0.1 voltage");
const QString Current = QStringLiteral("local 0.0.1 current");

} // namespace

class TestStripChart : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void saysHowToBegin()
    {
        StripChartBench bench;
        QVERIFY(!bench.plot().isVisible());
        QVERIFY(!bench.tool("pause")->isEnabled());
        QVERIFY(!bench.watcher.isRunning());
        bench.chart.add({PlantBench::channel(1)});
        QVERIFY(bench.plot().isVisible());
        QVERIFY(bench.tool("pause")->isEnabled());
        bench.chart.recorder().removeAll();
        QVERIFY(!bench.plot().isVisible());
        QVERIFY(!bench.watcher.isRunning());
    }

    void drawsVoltageAndCurrent()
    {
        StripChartBench bench;
        bench.ramp();
        const QwtPlotCurve *voltage = curve(bench.plot(), Voltage);
        const QwtPlotCurve *current = curve(bench.plot(), Current);
        QVERIFY(voltage && current);
        QCOMPARE(voltage->maxYValue(), 1200.0);
        QCOMPARE(voltage->yAxis(), int(QwtPlot::yLeft));
        QCOMPARE(current->yAxis(), int(QwtPlot::yRight));
        QVERIFY(bench.plot().axisInterval(QwtPlot::yLeft).maxValue() >= 1200);
        QVERIFY(bench.plot().axisInterval(QwtPlot::yRight).maxValue() >= current->maxYValue());
        QVERIFY(bench.plot().axisTitle(QwtPlot::yLeft).text().endsWith(QStringLiteral("/ V")));
        QVERIFY(bench.plot().axisTitle(QwtPlot::yRight).text().endsWith(QStringLiteral("/ \u00b5A")));
    }

    void keepsVoltagesAboveCurrents()
    {
        StripChartBench bench;
        bench.ramp(); // voltage and current go up together
        bench.chart.add({PlantBench::channel(2)});
        bench.run(1);
        double lowestVoltage = 0;
        double highestCurrent = bench.plot().canvas()->height();
        int drawn = 0;
        for (QwtPlotItem *item : bench.plot().itemList(QwtPlotItem::Rtti_PlotCurve)) {
            const auto *line = static_cast<QwtPlotCurve *>(item);
            if (line->title().text() != Voltage && line->title().text() != Current)
                continue;
            if (line == curve(bench.plot(), Voltage, Limit) || line == curve(bench.plot(), Current, Set)
                || line == curve(bench.plot(), Current, Limit))
                continue; // far above what is shown
            const auto y = [&](double value) { return bench.plot().transform(line->yAxis(), value); };
            if (line->yAxis() == QwtPlot::yLeft)
                lowestVoltage = std::max(lowestVoltage, y(line->minYValue()));
            else
                highestCurrent = std::min(highestCurrent, y(line->maxYValue()));
            ++drawn;
        }
        QCOMPARE(drawn, 3);
        QVERIFY2(lowestVoltage < highestCurrent,
                 qPrintable(QStringLiteral("%1 %2").arg(lowestVoltage).arg(highestCurrent)));
        QVERIFY(highestCurrent < bench.plot().canvas()->height());
    }

    void leavesRoomForTheMarks_data()
    {
        QTest::addColumn<int>("height");
        QTest::newRow("low") << 240;
        QTest::newRow("as it comes") << 500;
        QTest::newRow("high") << 900;
    }

    void leavesRoomForTheMarks()
    {
        QFETCH(int, height);
        StripChartBench bench;
        bench.chart.resize(900, height);
        bench.ramp();
        QTRY_VERIFY(!bench.plot().markTexts().isEmpty());
        const double top = bench.plot().transform(QwtPlot::yLeft, curve(bench.plot(), Voltage)->maxYValue());
        const double base = bench.plot().transform(QwtPlot::yLeft, 0);
        // A row of words, and one of marks without words.
        QVERIFY2(top >= 2 * bench.plot().fontMetrics().height(), qPrintable(QString::number(top)));
        QVERIFY2(top < base * 3 / 4, "and most of it is for the lines");
    }

    void labelsEachLaneWithItsOwnQuantity()
    {
        StripChartBench bench;
        bench.ramp();
        for (const int zooms : {0, 3}) { // as it is, and after zooming out by hand
            bench.turnWheel(-zooms, Qt::ControlModifier, QPoint(100, 100));
            const auto volts = bench.plot().axisScaleDiv(QwtPlot::yLeft).ticks(QwtScaleDiv::MajorTick);
            const auto amperes = bench.plot().axisScaleDiv(QwtPlot::yRight).ticks(QwtScaleDiv::MajorTick);
            QVERIFY(volts.size() > 1 && amperes.size() > 1);
            QCOMPARE(*std::min_element(volts.begin(), volts.end()), 0.0);
            const double most = *std::max_element(amperes.begin(), amperes.end());
            QVERIFY(bench.plot().transform(QwtPlot::yRight, most)
                    > bench.plot().transform(QwtPlot::yLeft, 0));
        }
    }

    void drawsNoLimitOfACurrentAmongTheVoltages()
    {
        StripChartBench bench;
        bench.ramp(); // 24 µA; the limit is 1 mA
        const QwtPlotCurve *limit = curve(bench.plot(), Current, Limit);
        QVERIFY(limit->isVisible());
        const auto isDrawn = [&] {
            QImage image(bench.plot().canvas()->size(), QImage::Format_RGB32);
            image.fill(Qt::white);
            const QImage empty = image;
            QPainter painter(&image);
            limit->draw(&painter, bench.plot().canvasMap(QwtPlot::xBottom),
                        bench.plot().canvasMap(QwtPlot::yRight), image.rect());
            painter.end();
            return image != empty;
        };
        QVERIFY(!isDrawn());
        simulator::Fault fault;
        fault.kind = simulator::FaultKind::Short;
        fault.controller = QStringLiteral("local");
        fault.object = PlantBench::address(1);
        QCOMPARE(bench.service.cause(fault), TarnResult::Success);
        bench.run(1); // and 1 mA flows
        QVERIFY(isDrawn());
    }

    void showsASmallCurrentBelowAHighSetCurrent()
    {
        StripChartBench bench;
        bench.ramp();
        const double flows = curve(bench.plot(), Current)->maxYValue();
        const auto amperes = bench.plot().axisScaleDiv(QwtPlot::yRight).ticks(QwtScaleDiv::MajorTick);
        QCOMPARE(curve(bench.plot(), Current, Set)->maxYValue(), 1e-3);
        QVERIFY(flows > 0 && *std::max_element(amperes.begin(), amperes.end()) < 2 * flows);
    }

    void showsAChannelThatIsOffInARangeOfItsSize()
    {
        StripChartBench bench;
        bench.tool("setValues")->setChecked(false);
        bench.chart.add({PlantBench::channel(1)}); // of 6 kV and 1 mA
        bench.run(1);
        const double volts = bench.plot().axisInterval(QwtPlot::yLeft).maxValue();
        QVERIFY2(volts >= 60 && volts <= 150, qPrintable(QString::number(volts)));
        const auto amperes = bench.plot().axisScaleDiv(QwtPlot::yRight).ticks(QwtScaleDiv::MajorTick);
        QVERIFY(amperes.size() > 1);
        QVERIFY(*std::max_element(amperes.begin(), amperes.end()) >= 1e-6);
    }

    void drawsNoTwoLinesAlike()
    {
        StripChartBench bench;
        for (int number = 0; number < ChannelRecorder::MostChannels; ++number)
            bench.chart.add({PlantBench::channel(number, 1)});
        QCOMPARE(bench.chart.recorder().count(), int(ChannelRecorder::MostChannels));
        QVector<QPen> pens;
        for (QwtPlotItem *item : bench.plot().itemList(QwtPlotItem::Rtti_PlotCurve)) {
            if (!item->testItemAttribute(QwtPlotItem::Legend))
                continue;
            const QPen pen = static_cast<QwtPlotCurve *>(item)->pen();
            for (const QPen &other : qAsConst(pens))
                QVERIFY(pen.color() != other.color() || pen.dashPattern() != other.dashPattern());
            pens.append(pen);
        }
        QVERIFY(pens.size() >= 2 * ChannelRecorder::MostChannels);
    }

    void canBeReadOnAnyGround_data()
    {
        QTest::addColumn<QColor>("ground");
        QTest::addColumn<QColor>("ink");
        QTest::newRow("light") << QColor(Qt::white) << QColor(Qt::black);
        QTest::newRow("dark") << QColor(0x23, 0x26, 0x29) << QColor(Qt::white);
    }

    void canBeReadOnAnyGround()
    {
        QFETCH(QColor, ground);
        QFETCH(QColor, ink);
        StripChartBench bench;
        QPalette palette = bench.chart.palette();
        palette.setColor(QPalette::Base, ground);
        palette.setColor(QPalette::Text, ink);
        palette.setColor(QPalette::WindowText, ink);
        bench.chart.setPalette(palette);
        for (int number = 0; number < ChannelRecorder::MostChannels; ++number)
            bench.chart.add({PlantBench::channel(number, 1)});
        const auto luminance = [](const QColor &colour) {
            const auto part = [](double value) {
                return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
            };
            return 0.2126 * part(colour.redF()) + 0.7152 * part(colour.greenF())
                + 0.0722 * part(colour.blueF());
        };
        QCOMPARE(bench.plot().canvasBackground().color(), ground);
        for (QwtPlotItem *item : bench.plot().itemList(QwtPlotItem::Rtti_PlotCurve)) {
            const QColor colour = static_cast<QwtPlotCurve *>(item)->pen().color();
            const double a = luminance(colour) + 0.05;
            const double b = luminance(ground) + 0.05;
            const double contrast = std::max(a, b) / std::min(a, b);
            QVERIFY2(contrast >= 4.5, qPrintable(colour.name() + QStringLiteral(" on ") + ground.name()));
        }
    }

    void drawsSetValuesLimitsAndEventsOnDemand()
    {
        StripChartBench bench;
        bench.ramp();
        const QwtPlotCurve *set = curve(bench.plot(), Voltage, Set);
        const QwtPlotCurve *limit = curve(bench.plot(), Voltage, Limit);
        QCOMPARE(set->maxYValue(), 1200.0);
        QCOMPARE(limit->maxYValue(), 6000.0);
        QVERIFY(bench.plot().axisInterval(QwtPlot::yLeft).maxValue() < 6000);
        QTRY_VERIFY(bench.plot().markTexts().contains(QStringLiteral("0.0.1 end of ramp")));

        QVERIFY(set->isVisible() && limit->isVisible());
        bench.tool("setValues")->trigger();
        QVERIFY(!set->isVisible());
        bench.tool("limits")->trigger();
        QVERIFY(!limit->isVisible());
        bench.tool("events")->trigger();
        QVERIFY(bench.plot().markTexts().isEmpty());
        bench.tool("setValues")->trigger();
        QVERIFY(set->isVisible());
    }

    void saysInTheLegendWhatIsWhat()
    {
        StripChartBench bench;
        bench.ramp();
        const auto *legend = qobject_cast<QwtLegend *>(bench.plot().legend());
        const auto texts = [&] {
            QStringList found;
            for (const auto *label : legend->findChildren<QwtLegendLabel *>())
                found << label->text().text();
            return found;
        };
        QCOMPARE(texts(),
                 QStringList({Voltage, Current, QStringLiteral("set values"), QStringLiteral("limits")}));
        bench.tool("setValues")->trigger();
        bench.tool("limits")->trigger();
        QTRY_COMPARE(texts(), QStringList({Voltage, Current}));
    }

    void removesAChannel()
    {
        StripChartBench bench;
        bench.chart.add({PlantBench::channel(1), PlantBench::channel(2)});
        const QPen second = curve(bench.plot(), QStringLiteral("local 0.0.2 voltage"))->pen();
        QMenu *menu = nullptr;
        for (QMenu *each : bench.chart.findChildren<QMenu *>()) {
            if (each->title() == QStringLiteral("Remove"))
                menu = each;
        }
        QVERIFY(menu);
        Q_EMIT menu->aboutToShow();
        QCOMPARE(menu->actions().at(0)->text(), QStringLiteral("local 0.0.1"));
        menu->actions().at(0)->trigger();
        QVERIFY(!curve(bench.plot(), Voltage));
        QCOMPARE(curve(bench.plot(), QStringLiteral("local 0.0.2 voltage"))->pen(), second);
        QCOMPARE(bench.chart.recorder().count(), 1);
    }

    void takesWhatIsDropped()
    {
        StripChartBench bench;
        OrbItemId module(OrbItemId::Module);
        module.connection = bench.dataAccess.getOrbConnectionIndex(QStringLiteral("bench"));
        const auto payload = hostkit::makeDragPayload({module}, bench.mainData.getDndMimeType());
        QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, payload.get(), Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&bench.chart, &enter);
        QVERIFY(enter.isAccepted());
        QDropEvent drop(QPointF(10, 10), Qt::CopyAction, payload.get(), Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&bench.chart, &drop);
        QCOMPARE(bench.chart.recorder().count(), 4);
        QCOMPARE(bench.chart.recorder().at(3).name(), QStringLiteral("bench 0.0.3"));
    }

    void saysWhatItCannotDraw()
    {
        StripChartBench bench;
        QSignalSpy messages(&bench.chart, &StripChart::message);
        OrbItemId crate(OrbItemId::Crate);
        crate.connectionName = QStringLiteral("local");
        crate.address = 1000;
        bench.chart.add({crate});
        QCOMPARE(messages.size(), 1);
        bench.chart.add({PlantBench::channel(99)});
        QVERIFY(messages.constLast().constFirst().toString().contains(QStringLiteral("no longer there")));
        OrbItemId module = PlantBench::channel(-1, 2); // 16 channels
        module.type = OrbItemId::Module;
        bench.chart.add({module});
        QVERIFY(messages.constLast().constFirst().toString().contains(QStringLiteral("at most 12")));
        QCOMPARE(bench.chart.recorder().count(), int(ChannelRecorder::MostChannels));
    }

    void exports_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("begins");
        QTest::newRow("PNG") << QStringLiteral("a.png") << QByteArray("\x89PNG");
        QTest::newRow("SVG") << QStringLiteral("a.SVG") << QByteArray("<?xml");
        QTest::newRow("CSV") << QStringLiteral("a.csv") << QByteArray("time / s,channel,");
    }

    void exports()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, begins);
        StripChartBench bench;
        bench.ramp();
        QTemporaryDir dir;
        QString error;
        QVERIFY2(bench.chart.exportTo(dir.filePath(name), error), qPrintable(error));
        QFile file(dir.filePath(name));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        QVERIFY(bytes.startsWith(begins));
        if (name.endsWith(QStringLiteral("png"))) {
            const QImage image = QImage::fromData(bytes);
            QCOMPARE(image.width(), 2 * bench.plot().width());
            // The voltage's own colour is in it.
            const QRgb ink = curve(bench.plot(), Voltage)->pen().color().rgb();
            int found = 0;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x)
                    found += image.pixel(x, y) == ink ? 1 : 0;
            }
            QVERIFY(found > 100);
        } else if (name.endsWith(QStringLiteral("SVG"))) {
            QVERIFY(bytes.contains("polyline") || bytes.contains("<path"));
            QVERIFY(bytes.contains("0.0.1"));
        }
        QVERIFY(!bench.chart.exportTo(dir.filePath(QStringLiteral("nowhere/") + name), error));
        QVERIFY(error.contains(QStringLiteral("nowhere")));
    }

    void saysWhetherItWasSaved_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("works");
        QTest::newRow("saved") << QStringLiteral("a.csv") << true;
        QTest::newRow("no such folder") << QStringLiteral("nowhere/a.csv") << false;
        QTest::newRow("a folder in its place") << QStringLiteral(".") << false;
    }

    void saysWhetherItWasSaved()
    {
        QFETCH(QString, name);
        QFETCH(bool, works);
        StripChartBench bench;
        bench.ramp();
        QSignalSpy messages(&bench.chart, &StripChart::message);
        for (const QMenu *menu : bench.chart.findChildren<QMenu *>()) {
            if (menu->title() == QStringLiteral("Export"))
                menu->actions().constLast()->trigger();
        }
        auto *dialog = bench.chart.findChild<QFileDialog *>();
        QVERIFY(dialog);
        QTemporaryDir dir;
        Q_EMIT dialog->fileSelected(dir.filePath(name));
        dialog->close();
        QCOMPARE(messages.size(), works ? 1 : 0);
        auto *complaint = bench.chart.findChild<QMessageBox *>(QStringLiteral("exportComplaint"));
        QCOMPARE(complaint != nullptr, !works);
        if (complaint) {
            QVERIFY(complaint->isVisible());
            QVERIFY(complaint->text().contains(dir.filePath(name)));
            complaint->close();
        }
    }
};

QTEST_MAIN(TestStripChart)

#include "tst_strip_chart.moc"
