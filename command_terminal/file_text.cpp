#include "command_terminal/file_text.h"

#include <QTextCodec>

namespace command_terminal
{

namespace
{

bool readsAs(const QTextCodec &codec, const QByteArray &bytes, QString &text)
{
    QTextCodec::ConverterState state;
    text = codec.toUnicode(bytes.constData(), bytes.size(), &state);
    return state.invalidChars == 0 && state.remainingChars == 0;
}

} // namespace

FileText decodeFile(const QByteArray &bytes)
{
    FileText result;
    result.codec = QTextCodec::codecForUtfText(bytes, QTextCodec::codecForLocale());
    if (!readsAs(*result.codec, bytes, result.text)) {
        result.codec = QTextCodec::codecForName("ISO-8859-1");
        result.text = result.codec->toUnicode(bytes);
    }
    result.text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    result.text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    return result;
}

QByteArray encodeFile(const QString &text, const QTextCodec *codec)
{
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    const QByteArray bytes = codec->fromUnicode(text.constData(), text.size(), &state);
    return state.invalidChars == 0 ? bytes : text.toUtf8();
}

} // namespace command_terminal
