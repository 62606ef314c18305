#include "command_terminal/terminal_file_editor.h"

#include "command_terminal/file_text.h"
#include "command_terminal/terminal_font.h"
#include "hostsdk/kd_child_event.h"
#include "hostsdk/kd_main_data.h"
#include "hostsdk/kd_observer.h"
#include "plugin/terminal_plugin_state.h"

#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QSaveFile>
#include <QTextCodec>

TerminalFileEditor::TerminalFileEditor(QWidget *parent, TerminalPluginState *state, KdMainData &hostData,
                                       KdObserver &eventObserver)
    : KdPlainTextEdit(parent, hostData, eventObserver),
      pluginState(state),
      codec(QTextCodec::codecForLocale())
{
    setFont(command_terminal::terminalFont());
    setWordWrapMode(QTextOption::WrapAnywhere); // at blanks, a file of one long word would freeze the window
    connect(this, &QPlainTextEdit::textChanged, this, &TerminalFileEditor::textWasChanged);
}

TerminalFileEditor::~TerminalFileEditor() = default;

QString TerminalFileEditor::wholeText() const
{
    return document()->toRawText().replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
}

void TerminalFileEditor::textWasChanged()
{
    if (modified)
        return;
    modified = true;
    KdChildEvent event(KD::ModifiedChanged, qint64{1});
    observer.processChildEvent(event);
}

void TerminalFileEditor::setUnmodified()
{
    modified = false;
    document()->setModified(false); // a host looks there before it closes a tool
    KdChildEvent event(KD::ModifiedChanged, qint64{0});
    observer.processChildEvent(event);
}

void TerminalFileEditor::handleEvent(KdChildEvent &event)
{
    switch (event.type) {
    case KD::OpenFile:
        askForFileToOpen();
        break;
    case KD::SaveFile:
        save();
        break;
    case KD::Request:
        insertPlainText(event.getStringArgument(0) + QLatin1Char('\n'));
        break;
    default:
        break;
    }
}

QString TerminalFileEditor::recentDirectory() const
{
    const QStringList &files = pythonMode ? pluginState->pythonFiles : pluginState->commandFiles;
    return files.isEmpty() ? QString() : QFileInfo(files.constFirst()).absolutePath();
}

void TerminalFileEditor::rememberFile(const QString &path)
{
    if (pythonMode)
        pluginState->addPythonFile(path);
    else
        pluginState->addCommandFile(path);
}

void TerminalFileEditor::showDialog(QFileDialog *dialog, void (TerminalFileEditor::*chosen)(const QString &))
{
    // Not exec(): the tool may be closed while the dialog asks, and must not be waited for on the stack then.
    openDialog = dialog;
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setWindowModality(Qt::WindowModal);
    connect(dialog, &QFileDialog::fileSelected, this, chosen);
    dialog->open();
}

void TerminalFileEditor::askForFileToOpen()
{
    if (openDialog)
        return;
    // The title is the same for Python files: this is meant.
    auto *dialog = new QFileDialog(this, tr("Open Command File"), recentDirectory());
    dialog->setAcceptMode(QFileDialog::AcceptOpen);
    dialog->setFileMode(QFileDialog::ExistingFile);
    showDialog(dialog, &TerminalFileEditor::openFile);
}

void TerminalFileEditor::openFile(const QString &path)
{
    // A pipe or a device could keep the window waiting for ever.
    if (path.isEmpty() || !QFileInfo(path).isFile())
        return;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return;
    const command_terminal::FileText content = command_terminal::decodeFile(bytes);
    // As one edit, so that what was typed before can be had back.
    QTextCursor all(document());
    all.select(QTextCursor::Document);
    all.insertText(content.text);
    moveCursor(QTextCursor::Start);
    codec = content.codec;
    currentFile = path;
    setUnmodified();
    rememberFile(path);
}

void TerminalFileEditor::save()
{
    if (currentFile.isEmpty())
        askForFileToSave();
    else
        writeFile();
}

void TerminalFileEditor::askForFileToSave()
{
    if (openDialog)
        return;
    QString directory = recentDirectory();
    if (directory.isEmpty())
        directory = mainData.getDefaultDirectory();
    auto *dialog =
        new QFileDialog(this, pythonMode ? tr("Save Python File") : tr("Save Command File"), directory);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setFileMode(QFileDialog::AnyFile);
    showDialog(dialog, &TerminalFileEditor::saveAs);
}

void TerminalFileEditor::saveAs(const QString &path)
{
    currentFile = path;
    if (!currentFile.isEmpty())
        writeFile();
}

void TerminalFileEditor::writeFile()
{
    // The old file stays whole until the new one is: written beside it, then put in its place.
    const QFileInfo target(currentFile);
    QSaveFile file(currentFile);
    const bool writable =
        (!target.exists() || target.isFile()) && file.open(QIODevice::WriteOnly | QIODevice::Text);
    if (!writable) {
        currentFile.clear();
        return;
    }
    const QByteArray bytes = command_terminal::encodeFile(wholeText(), codec);
    if (file.write(bytes) != bytes.size() || !file.commit()) {
        currentFile.clear();
        return;
    }
    rememberFile(currentFile);
    setUnmodified();
}
