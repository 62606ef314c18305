#pragma once

#include "tests/workbench/plant_bench.h"
#include "workbench/app/channel_recorder.h"
#include "workbench/app/plant_watcher.h"
#include "workbench/app/strip_chart.h"
#include "workbench/app/strip_chart_plot.h"

#include <QAction>
#include <QCoreApplication>
#include <QWheelEvent>

#include <qwt_plot_canvas.h>

/// A chart of the plant that is shown, with time that the test lets pass.
struct StripChartBench : PlantBench
{
    StripChartBench()
    {
        chart.resize(900, 500);
        chart.show();
    }

    void run(double seconds)
    {
        constexpr double Step = 0.1;
        for (double done = 0; done < seconds - Step / 2; done += Step) {
            step(Step);
            watcher.poll();
        }
        plot().redraw();
    }

    /// Channel 1 at 1200 V for a second.
    void ramp()
    {
        chart.add({channel(1)});
        rampTo(channel(1), 1200);
        run(3);
    }

    workbench::StripChartPlot &plot() { return chart.plot(); }
    QAction *tool(const char *name) { return chart.findChild<QAction *>(QString::fromLatin1(name)); }

    void turnWheel(int notches, Qt::KeyboardModifiers modifiers, const QPoint &place)
    {
        QWidget *canvas = plot().canvas();
        constexpr int Notch = 120;
        QWheelEvent event(place, canvas->mapToGlobal(place), QPoint(), QPoint(0, notches * Notch),
                          Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(canvas, &event);
    }

    workbench::PlantWatcher watcher{service};
    workbench::StripChart chart{mainData, watcher};
};
