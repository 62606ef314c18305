#pragma once

#include "hostclient/dl_message_subscriber.h"
#include "hostclient/orb_item_id.h"
#include "hostsdk/kd_event_type.h"

#include <QWidget>

class KdMainData;
class KdObserver;
class QComboBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QPushButton;

/// The form that builds a getItem or setItem request for one item. It reports the request (258) and the chosen
/// controller (259) to its observer. GUI thread, except wantsNotification and structureChanged, which may be called on any thread.
class TerminalCommandGeneration : public QWidget, public DlMessageSubscriber
{
    Q_OBJECT

public:
    /// `parent` owns the form; main data, its data access layer and the observer outlive it.
    TerminalCommandGeneration(QWidget *parent, KdMainData &mainData, KdObserver &observer);
    ~TerminalCommandGeneration() override;

    /// Shows an item address in the form: its items, its controller, its numbers.
    void setItemId(const OrbItemId &id);

    bool wantsNotification(DlNotificationQuery &query) override;
    void structureChanged(const OrbItemId &id) override;

protected:
    void customEvent(QEvent *event) override;

private:
    void addColumn(QGridLayout *grid, int column, QWidget *caption, QWidget *input);
    void sendText(KD::EventType type, const QString &text);
    void sendRequest(const QString &commandName, const QString &value, const QString &unit);
    void sendGet();
    void sendSet();
    void controllerSelected(int index);
    void levelFromFields();
    void refreshItemNames(const OrbItemId &id);
    void refreshControllers();
    bool fillControllers(const QString *selectedText);
    QString readSystemItem(const OrbItemId &id, const QString &itemName) const;

    KdMainData *mainData;
    KdObserver *observer;
    OrbItemId itemId; ///< the address shown; its level decides which items are offered
    QComboBox *controllerBox; ///< the controllers by display text, with their connection name as user data
    QLineEdit *lineEdit;
    QLineEdit *addressEdit;
    QLineEdit *channelEdit;
    QLabel *itemLabel;
    QComboBox *itemBox;
    QLineEdit *valueEdit;
    QLineEdit *unitEdit;
    QPushButton *getButton;
    QPushButton *setButton;
};
