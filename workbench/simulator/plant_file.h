#pragma once

#include "workbench/simulator/plant_layout.h"

#include <QByteArray>
#include <QString>

namespace simulator
{

/// Plant files: a plant as JSON. docs/plant_files.md says what may be in one; PlantSchema is where that comes from.
///
/// Each operation returns false when something is wrong, and then leaves what it would fill in as it was. `error` is one
/// line then: "FILE:LINE:COLUMN: what is wrong, and what is allowed", or "FILE: why it cannot be read".
class PlantFile
{
public:
    /// A larger one is refused. Bytes.
    static constexpr qint64 LargestFile = 16 * 1024 * 1024;

    static bool read(const QString &fileName, PlantLayout &layout, QString &error);
    /// The same of a text that has been read already. `shownFileName` is for the error.
    static bool parse(const QByteArray &text, const QString &shownFileName, PlantLayout &layout,
                      QString &error);

    /// A file that holds nothing but "faults": adds them to those that the layout has. They are of objects that the
    /// layout has.
    static bool readFaults(const QString &fileName, PlantLayout &layout, QString &error);
};

} // namespace simulator
