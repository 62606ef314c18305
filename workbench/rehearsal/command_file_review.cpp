#include "workbench/rehearsal/command_file_review.h"

#include "workbench/simulator/request_parser.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QStringList>

#include <algorithm>

namespace rehearsal
{

namespace
{

constexpr int WaitDigits = 5; // characters at the end of a line that the terminal reads

QString tr(const char *text)
{
    return QCoreApplication::translate("rehearsal::CommandFileReview", text);
}

QString withLineFeeds(QString text)
{
    // As the editor does, through which the terminal gets the file.
    return text.replace(QLatin1String("\r\n"), QLatin1String("\n"))
        .replace(QChar::ParagraphSeparator, QLatin1Char('\n'))
        .replace(QLatin1Char('\r'), QLatin1Char('\n'));
}

bool isRequest(const QString &line)
{
    return !line.isEmpty() && !line.startsWith(QLatin1Char('#')) && !line.startsWith(QLatin1String("wait "));
}

/// What is odd about a wait; empty when it waits for as long as it says.
QString waitRemark(const QString &line)
{
    bool isTaken = false;
    const uint milliseconds = line.rightRef(WaitDigits).toUInt(&isTaken);
    const QString written = line.mid(WaitDigits).trimmed();
    bool isNumber = false;
    const qulonglong meant = written.toULongLong(&isNumber);
    if (!isTaken) {
        return isNumber
            ? tr("\"%1\" does not wait: the terminal takes four or five digits. For %2 ms write "
                 "\"wait %3\".")
                  .arg(line, written, written.rightJustified(4, QLatin1Char('0')))
            : tr("\"%1\" does not wait: \"wait\" is followed by milliseconds of four or five digits.")
                  .arg(line);
    }
    if (!isNumber || meant != milliseconds)
        return tr("\"%1\" waits for %2 ms: the terminal reads the last five characters of the line.")
            .arg(line, QString::number(milliseconds));
    return {};
}

/// What is odd about a line that is sent as it stands; empty when it looks like a request.
QString requestRemark(const QString &line)
{
    static const QStringList otherComments{QStringLiteral("//"), QStringLiteral("/*"), QStringLiteral("--"),
                                           QStringLiteral(";"),  QStringLiteral("%"),  QStringLiteral("'"),
                                           QStringLiteral("!")};
    const auto begins = [&line](const QString &sign) { return line.startsWith(sign); };
    if (std::any_of(otherComments.begin(), otherComments.end(), begins)
        || line.startsWith(QLatin1String("rem "), Qt::CaseInsensitive))
        return tr("This line is sent as a request: a comment begins with \"#\".");
    if (line.startsWith(QLatin1String("wait"), Qt::CaseInsensitive))
        return tr(
            "This line is sent as a request: a wait begins with \"wait\" in small letters and a blank.");
    if (line.size() > simulator::RequestParser::LongestRequest)
        return tr("This request has %1 characters; at most %2 are taken.")
            .arg(line.size())
            .arg(simulator::RequestParser::LongestRequest);
    QJsonParseError error{};
    QJsonDocument::fromJson(line.toUtf8(), &error);
    const bool isCut = error.error == QJsonParseError::UnterminatedObject
        || error.error == QJsonParseError::UnterminatedArray;
    if (isCut && line.startsWith(QLatin1Char('{')))
        return tr(
            "This request does not end on its line. Each line is sent by itself; a request stands on one.");
    return {};
}

/// Remarks on each of the lines, and what follows where the run ended.
class Reader
{
public:
    explicit Reader(const QString &text) : lines(withLineFeeds(text).split(QLatin1Char('\n'))) { }

    CommandFileReview read()
    {
        // The last piece has no line feed behind it.
        const int whole = lines.size() - 1;
        const auto isBlank = [](const QString &line) { return line.trimmed().isEmpty(); };
        if (std::all_of(lines.begin(), lines.end(), isBlank))
            review.remarks.append({0, tr("The file is empty: nothing is executed.")});
        int at = 0;
        while (at < whole) {
            if (lines.at(at).isEmpty()) {
                endAt(at);
                return review;
            }
            take(at++);
            // Of the line feeds in a row every second one is taken away; what is left of two or more empty lines
            // is an empty line.
            const int empty = emptyLinesFrom(at, whole);
            if (empty > 1) {
                endAt(at + 1);
                return review;
            }
            at += empty;
        }
        if (!lines.at(whole).trimmed().isEmpty()) {
            review.remarks.append(
                {whole + 1, tr("The last line is not executed: there is no line feed at its end.")});
        }
        return review;
    }

private:
    int emptyLinesFrom(int at, int whole) const
    {
        int count = 0;
        while (at + count < whole && lines.at(at + count).isEmpty())
            ++count;
        return count;
    }

    void take(int at)
    {
        const QString line = lines.at(at).trimmed();
        review.executed.append({at + 1, line});
        QString remark;
        const bool isFirstOfNoText = !hasNul && line.contains(QChar::Null);
        if (isFirstOfNoText)
            remark = tr("This line has a NUL character: the file is no text, or UTF-16 without a mark at its "
                        "beginning.");
        else if (line.startsWith(QLatin1String("wait ")))
            remark = waitRemark(line);
        else if (isRequest(line))
            remark = requestRemark(line);
        if (!remark.isEmpty())
            review.remarks.append({at + 1, remark});
        hasNul = hasNul || isFirstOfNoText;
    }

    void endAt(int at)
    {
        int lost = 0;
        for (int i = at + 1; i < lines.size(); ++i) {
            if (!lines.at(i).trimmed().isEmpty())
                ++lost;
        }
        if (lost == 0)
            return;
        const QString reason = at == 0 ? tr("A file that begins with an empty line is not executed.")
                                       : tr("The second empty line in a row ends the run.");
        review.remarks.append(
            {at + 1, reason + QLatin1Char(' ') + tr("Lines below that are not executed: %1.").arg(lost)});
    }

    const QStringList lines;
    CommandFileReview review;
    bool hasNul = false; ///< a line so far
};

} // namespace

CommandFileReview reviewCommandFile(const QString &text)
{
    return Reader(text).read();
}

} // namespace rehearsal
