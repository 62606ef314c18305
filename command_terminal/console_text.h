#pragma once

#include <QString>

/// How the console reads what stands after its prompt. Pure functions, callable from any thread.
namespace command_terminal
{

/// The line that is handed over: the line feed that ended it goes, then trailing line feeds, carriage returns,
/// blanks and tabs. The first character is never examined, so an input of one blank is handed over as it is.
QString handedOverLine(QString input);

/// Where the word before the end of the input begins: behind the last character that is not a letter, a digit, "."
/// or "_". The first character is never examined, so an input whose only separator is its first character is one word.
int wordStart(const QString &input);

} // namespace command_terminal
