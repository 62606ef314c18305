#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

/// Debian's chromium, without a window. Each call is a browser of its own; what goes wrong with it is a failed check.
namespace browser
{

struct Shown
{
    QString dom;
    QString messages; ///< of the page, in the browser's console
};

/// What the browser makes of the page at this path.
void show(const QString &page, int width, Shown &shown, const QStringList &arguments = {});

/// A report with a script in it, in a frame of this width, because no window is as narrow as a phone. Keeps the report's
/// style; lets the script run, which no report does by itself.
QByteArray framed(QByteArray report, const QByteArray &script, int width, int height);

/// What that script left in the global `seen`.
QJsonObject seen(const Shown &shown);

} // namespace browser
