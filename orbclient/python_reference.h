#pragma once

#include <QString>
#include <QVector>

namespace orbclient
{

/// A page of the reference.
struct ReferencePage
{
    QString fileName;
    QString text; ///< Markdown
};

/// The reference of the module: one page of its functions and one for each object type, from the module's own tables.
/// The same tables give the same text, byte by byte. Needs no interpreter.
QVector<ReferencePage> pythonReference();

/// The unit that a docstring gives for a value ("V/s"); empty when it gives none.
QString unitIn(const QString &docstring);

} // namespace orbclient
