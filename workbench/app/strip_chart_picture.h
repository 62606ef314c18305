#pragma once

#include <QString>

class QwtPlot;

namespace workbench
{

/// Saves a plot as it is shown, as PNG or SVG by the ending of the file's name; what ends otherwise is a PNG. False,
/// with an operator's text, when the file cannot be written; one that was there is then as it was.
bool saveStripChartPicture(QwtPlot &plot, const QString &fileName, QString &error);

} // namespace workbench
