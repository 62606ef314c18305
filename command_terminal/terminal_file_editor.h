#pragma once

#include "hostsdk/kd_plain_text_edit.h"

#include <QPointer>
#include <QString>

class KdChildEvent;
class QFileDialog;
class QTextCodec;
struct TerminalPluginState;

/// The editor for command files and Python files. Failures to read or write say nothing; a failed save makes the
/// next one ask for a name again. GUI thread only.
class TerminalFileEditor : public KdPlainTextEdit
{
    Q_OBJECT

public:
    /// `parent` owns the editor; state, main data and observer outlive it.
    TerminalFileEditor(QWidget *parent, TerminalPluginState *state, KdMainData &mainData,
                       KdObserver &observer);
    ~TerminalFileEditor() override;

    /// Opens (254), saves (255), or inserts a request as a line of its own at the cursor (258).
    void handleEvent(KdChildEvent &event);

    /// Whether Python files are edited instead of command files.
    void setPythonMode(bool python) { pythonMode = python; }

    /// The text as it was read or typed. Other than toPlainText it keeps blanks that must not be broken at.
    QString wholeText() const;

    /// Path of the file last opened or saved; empty for a new text.
    QString getCurrentFile() const { return currentFile; }

private:
    void textWasChanged();
    void askForFileToOpen();
    void openFile(const QString &path);
    void save();
    void askForFileToSave();
    void writeFile();
    void setUnmodified();
    void showDialog(QFileDialog *dialog, void (TerminalFileEditor::*chosen)(const QString &));
    void saveAs(const QString &path);
    void rememberFile(const QString &path);
    QString recentDirectory() const;

    TerminalPluginState *pluginState;
    QString currentFile;
    bool modified = false; ///< the text changed since the last open or save
    bool pythonMode = false;
    QTextCodec *codec; ///< that the file was read with; not owned
    QPointer<QFileDialog> openDialog; ///< the dialog that is asking at the moment
};
