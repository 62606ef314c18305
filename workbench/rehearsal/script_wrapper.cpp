#include "workbench/rehearsal/script_wrapper.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

namespace rehearsal
{

namespace
{

// In a dictionary of its own, so that no name of it is among the scripts, nor a name of theirs in its way. The script is compiled from bytes, as the
// terminal does it, for the sake of a comment that names its encoding. A copy of the process that the script makes does
// not tell how it ended.
const char *const Wrapper = R"(
def rehearse(script, name, outcome, there, here):
    import json, linecache, os, sys, traceback
    from io import open
    process = os.getpid()

    def tell(kind, line=0, lines=()):
        if os.getpid() == process:
            with open(outcome, "w", encoding="utf-8", errors="backslashreplace") as file:
                json.dump({"kind": kind, "line": line or 0, "text": "".join(lines)}, file)

    text = script.decode("utf-8", "replace")
    linecache.cache[name] = (len(text), None, text.splitlines(True), name)
    try:
        code = compile(script, name, "exec", 0, True)
    except Exception as error:
        tell("does not compile", getattr(error, "lineno", 0),
             traceback.format_exception_only(type(error), error))
        return
    try:
        exec(code, there, here)
    except SystemExit as end:
        if end.code is None or end.code == 0 and isinstance(end.code, int):
            tell("done")
        else:
            tell("exited", 0, [str(end.code)])
        raise
    except BaseException as error:
        trace = error.__traceback__.tb_next
        line = 0
        for frame, number in traceback.walk_tb(trace):
            if frame.f_code.co_filename == name:
                line = number
        tell("raised", line, traceback.format_exception(type(error), error, trace))
        raise
    tell("done")
)";

QString pythonBytes(const QByteArray &bytes)
{
    return QStringLiteral("__import__('base64').b64decode(b'%1')").arg(QLatin1String(bytes.toBase64()));
}

QString pythonText(const QString &text)
{
    return pythonBytes(text.toUtf8()) + QStringLiteral(".decode()");
}

} // namespace

QString wrappedScript(const QString &script, const QString &shownName, const QString &outcomeFile)
{
    return QStringLiteral("(lambda space: (exec(compile(%1, '<rehearsal>', 'exec'), space), "
                          "space['rehearse']))"
                          "({'__builtins__': __import__('builtins')})[1](%2, %3, %4, globals(), locals())\n")
        .arg(pythonText(QString::fromLatin1(Wrapper)), pythonBytes(script.toUtf8()), pythonText(shownName),
             pythonText(outcomeFile));
}

bool readScriptOutcome(const QString &outcomeFile, ScriptOutcome &outcome)
{
    outcome = {};
    QFile file(outcomeFile);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QJsonObject told = QJsonDocument::fromJson(file.readAll()).object();
    const QString kind = told.value(QLatin1String("kind")).toString();
    if (kind == QLatin1String("done"))
        outcome.kind = ScriptOutcome::Done;
    else if (kind == QLatin1String("does not compile"))
        outcome.kind = ScriptOutcome::DoesNotCompile;
    else if (kind == QLatin1String("raised"))
        outcome.kind = ScriptOutcome::Raised;
    else if (kind == QLatin1String("exited"))
        outcome.kind = ScriptOutcome::Exited;
    else
        return false;
    outcome.line = told.value(QLatin1String("line")).toInt();
    outcome.text = told.value(QLatin1String("text")).toString();
    return true;
}

} // namespace rehearsal
