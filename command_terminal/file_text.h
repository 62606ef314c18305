#pragma once

#include <QByteArray>
#include <QString>

class QTextCodec;

/// Between the bytes of a file and the text in the editor, so that what is opened and saved again is not damaged.
/// Pure functions, GUI thread only, since the system's codec may keep a state.
namespace command_terminal
{

/// A file's text, with line feeds for line ends of every kind.
struct FileText
{
    QString text;
    QTextCodec *codec = nullptr; ///< to write it with; never null, not owned
};

/// Reads the bytes in the system's codec, or in Unicode when they begin with its mark. Bytes that the codec cannot
/// read are taken one by one as Latin-1, which every byte comes back from.
FileText decodeFile(const QByteArray &bytes);

/// Writes the text in that codec, or in UTF-8 when it holds a character that the codec does not know.
QByteArray encodeFile(const QString &text, const QTextCodec *codec);

} // namespace command_terminal
