#pragma once

#include "command_terminal/terminal_command_generation.h"
#include "hostclient/dl_data_access.h"
#include "hostsdk/kd_main_data.h"
#include "tests/support/recording_backend.h"
#include "tests/support/recording_observer.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QLabel>
#include <QLineEdit>
#include <QThread>

#include <atomic>
#include <memory>

/// A backend of which a controller can go between being listed and being asked for, and which notes whether another
/// thread than its own lists the controllers.
class VanishingBackend : public RecordingBackend
{
public:
    std::atomic<bool> vanished{false};
    mutable std::atomic<bool> listedElsewhere{false};

    QVector<QPair<QString, QString>> controllers() const override
    {
        if (QThread::currentThread() != thread)
            listedElsewhere = true;
        return RecordingBackend::controllers();
    }
    int connectionIndex(const QString &connectionName) const override
    {
        const int index = RecordingBackend::connectionIndex(connectionName);
        return vanished ? -1 : index;
    }

private:
    QThread *const thread = QThread::currentThread();
};

/// The command form before three controllers that it does not know of yet, and what a test asks of it.
class CommandFormBench
{
public:
    CommandFormBench()
    {
        // A new subscriber is told of the structure that is there; let that pass with no controllers.
        settle();
        backend.setControllers(threeControllers());
        backend.clearCalls();
        observer.clear();
    }

    static QVector<QPair<QString, QString>> threeControllers()
    {
        return {{QStringLiteral("c0"), QStringLiteral("North")},
                {QStringLiteral("c1"), QStringLiteral("East")},
                {QStringLiteral("c2"), QStringLiteral("South")}};
    }

    QComboBox *controllers() const { return field<QComboBox>("controllerBox"); }
    QComboBox *items() const { return field<QComboBox>("itemBox"); }
    QString caption() const { return field<QLabel>("itemLabel")->text(); }
    QString text(const char *name) const { return field<QLineEdit>(name)->text(); }
    void setText(const char *name, const QString &text) { field<QLineEdit>(name)->setText(text); }

    QStringList listed() const
    {
        QStringList entries;
        for (int i = 0; i < controllers()->count(); ++i)
            entries.append(controllers()->itemText(i));
        return entries;
    }

    /// What was told of the controller, oldest first, and the last two of it.
    QStringList chosen() const { return observer.textsOf(KD::ControllerChosen); }
    QStringList lastChosen() const { return chosen().mid(chosen().size() - 2); }

    int calls(const char *operation) const { return backend.callsOf(QLatin1String(operation)).size(); }

    /// The structure changed; the form has refreshed itself when this returns, and only that is on record.
    void changeStructure()
    {
        observer.clear();
        backend.clearCalls();
        form->structureChanged(OrbItemId());
        settle();
    }

    /// Delivers what is posted, and what that posts in turn: a notification, then the refresh that it leads to.
    static void settle()
    {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::sendPostedEvents();
    }

    void setReading(const char *connection, const char *item, const QString &value)
    {
        backend.setItem(QLatin1String(connection), QLatin1String(item),
                        {value, {}, QStringLiteral("string"), 0});
    }

    RecordingObserver observer;
    VanishingBackend backend;
    DlDataAccess dataAccess{backend};
    KdMainData mainData{&dataAccess};
    std::unique_ptr<TerminalCommandGeneration> form =
        std::make_unique<TerminalCommandGeneration>(nullptr, mainData, observer);

private:
    template <class Widget>
    Widget *field(const char *name) const
    {
        auto *found = form->findChild<Widget *>(QLatin1String(name));
        Q_ASSERT(found);
        return found;
    }
};
