#pragma once

#include "command_terminal/terminal_file_editor.h"
#include "hostsdk/kd_child_event.h"
#include "plugin/terminal_plugin_state.h"
#include "tests/command_terminal/terminal_fixture.h"

#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

/// A file editor in a window, with a folder of its own to read from and to write to.
class FileEditorBench : public TerminalFixture
{
public:
    explicit FileEditorBench(bool python = false)
    {
        editor->setPythonMode(python);
        window.show();
    }

    void send(KD::EventType type)
    {
        KdChildEvent event(type);
        editor->handleEvent(event);
    }

    /// The dialog that is asking at the moment, null for none.
    QFileDialog *dialog() const { return qobject_cast<QFileDialog *>(QApplication::activeModalWidget()); }

    /// Types a name into the dialog and accepts it, as a user does. The dialog is gone afterwards.
    bool choose(const QString &path)
    {
        QFileDialog *asking = dialog();
        auto *name = asking ? asking->findChild<QLineEdit *>(QStringLiteral("fileNameEdit")) : nullptr;
        if (!name)
            return false;
        name->setText(path);
        QMetaObject::invokeMethod(asking, "accept");
        return isDialogGone();
    }

    /// A name that the dialog lets through although it cannot be used any more, for example since it was a file a
    /// moment ago.
    bool chooseUnchecked(const QString &path)
    {
        QFileDialog *asking = dialog();
        if (!asking)
            return false;
        Q_EMIT asking->fileSelected(path);
        return cancel();
    }

    bool cancel()
    {
        QFileDialog *asking = dialog();
        if (!asking)
            return false;
        asking->reject();
        return isDialogGone();
    }

    bool open(const QString &path)
    {
        send(KD::OpenFile);
        return choose(path);
    }

    bool saveAs(const QString &path)
    {
        send(KD::SaveFile);
        return choose(path);
    }

    QString path(const QString &name) const { return folder.filePath(name); }

    /// Makes a file in the folder and returns its path.
    QString write(const QString &name, const QByteArray &content) const
    {
        QFile file(path(name));
        if (file.open(QIODevice::WriteOnly))
            file.write(content);
        return file.fileName();
    }

    static QByteArray read(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArrayLiteral("(cannot be read)");
    }

    /// What was said about the text: 1 when it first differs from its file, 0 when it does not any more.
    std::vector<qint64> modifiedEvents() const { return observer.integersOf(KD::ModifiedChanged); }

    QTemporaryDir folder;
    TerminalPluginState state;
    QWidget window;
    std::unique_ptr<TerminalFileEditor> editor =
        std::make_unique<TerminalFileEditor>(&window, &state, mainData, observer);

private:
    bool isDialogGone() const
    {
        return QTest::qWaitFor([this] { return editor->findChildren<QFileDialog *>().isEmpty(); });
    }
};
