#include "workbench/simulator/plant_reference.h"

#include <QSaveFile>
#include <QTextStream>

// Writes the reference of plant files, made from their schema:
//   generate_plant_reference FILE
// Returns 0, 1 when the file could not be written, 2 when it is called otherwise.
int main(int argumentCount, char *arguments[])
{
    if (argumentCount != 2) {
        QTextStream(stderr) << "Usage: generate_plant_reference FILE\n";
        return 2;
    }
    QSaveFile file(QString::fromLocal8Bit(arguments[1]));
    const QByteArray text = simulator::plantReference().toUtf8();
    if (file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.commit())
        return 0;
    QTextStream(stderr) << file.fileName() << ": " << file.errorString() << '\n';
    return 1;
}
