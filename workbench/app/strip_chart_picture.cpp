#include "workbench/app/strip_chart_picture.h"

#include "workbench/app/translated_text.h"

#include <QBuffer>
#include <QImage>
#include <QPainter>
#include <QSaveFile>
#include <QTemporaryDir>

#include <qwt_plot.h>
#include <qwt_plot_renderer.h>

namespace workbench
{

namespace
{

QByteArray pngOf(QwtPlot &plot)
{
    constexpr int Scale = 2; // for print
    QImage image(plot.size() * Scale, QImage::Format_RGB32);
    image.fill(plot.palette().color(QPalette::Window));
    QPainter painter(&image);
    painter.scale(Scale, Scale);
    QwtPlotRenderer().render(&plot, &painter, QRectF(QPointF(), plot.size()));
    painter.end();
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return buffer.data();
}

QByteArray svgOf(QwtPlot &plot)
{
    // The library draws to a file only.
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("chart.svg")));
    constexpr double Inch = 25.4; // mm
    const QSizeF size = QSizeF(plot.size()) * Inch / plot.logicalDpiX();
    QwtPlotRenderer().renderDocument(&plot, file.fileName(), QStringLiteral("svg"), size, plot.logicalDpiX());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

bool saveStripChartPicture(QwtPlot &plot, const QString &fileName, QString &error)
{
    const bool isSvg = fileName.endsWith(QLatin1String(".svg"), Qt::CaseInsensitive);
    const QByteArray picture = isSvg ? svgOf(plot) : pngOf(plot);
    if (picture.isEmpty()) {
        error = tr("The picture could not be drawn.");
        return false;
    }
    QSaveFile file(fileName);
    if (file.open(QIODevice::WriteOnly) && file.write(picture) == picture.size() && file.commit())
        return true;
    error = tr("\"%1\" could not be written: %2").arg(fileName, file.errorString());
    return false;
}

} // namespace workbench
