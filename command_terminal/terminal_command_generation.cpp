#include "command_terminal/terminal_command_generation.h"

#include "command_terminal/request_text.h"
#include "hostclient/dl_data_access.h"
#include "hostclient/orb_item_definitions.h"
#include "hostclient/orb_item_value.h"
#include "hostsdk/kd_child_event.h"
#include "hostsdk/kd_custom_q_event.h"
#include "hostsdk/kd_main_data.h"
#include "hostsdk/kd_observer.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QCoreApplication>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPair>
#include <QPushButton>
#include <QVector>

#include <algorithm>

namespace
{

constexpr uint FirstCrateAddress = 1000;

} // namespace

TerminalCommandGeneration::TerminalCommandGeneration(QWidget *parent, KdMainData &hostData,
                                                     KdObserver &eventObserver)
    : QWidget(parent),
      mainData(&hostData),
      observer(&eventObserver),
      controllerBox(new QComboBox(this)),
      lineEdit(new QLineEdit(this)),
      addressEdit(new QLineEdit(this)),
      channelEdit(new QLineEdit(this)),
      // The captions that never change are the same in every language: this is meant.
      itemLabel(new QLabel(QStringLiteral("Item"), this)),
      itemBox(new QComboBox(this)),
      valueEdit(new QLineEdit(this)),
      unitEdit(new QLineEdit(this)),
      getButton(new QPushButton(QStringLiteral("Get"), this)),
      setButton(new QPushButton(QStringLiteral("Set"), this))
{
    controllerBox->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    itemBox->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    controllerBox->addItem(tr("Select a controller"));
    itemBox->addItem(tr("Select a command"));

    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(4);
    int column = 0;
    addColumn(grid, column++, new QLabel(QStringLiteral("Controller"), this), controllerBox);
    addColumn(grid, column++, new QLabel(QStringLiteral("Line"), this), lineEdit);
    addColumn(grid, column++, new QLabel(QStringLiteral("Address"), this), addressEdit);
    addColumn(grid, column++, new QLabel(QStringLiteral("Channel"), this), channelEdit);
    addColumn(grid, column++, itemLabel, itemBox);
    addColumn(grid, column++, new QLabel(QStringLiteral("Value"), this), valueEdit);
    addColumn(grid, column++, new QLabel(QStringLiteral("Unit"), this), unitEdit);
    addColumn(grid, column, getButton, setButton);
    // Numbers and units are short: what room there is goes to the value.
    const int digit = fontMetrics().horizontalAdvance(QLatin1Char('0'));
    for (QLineEdit *edit : {lineEdit, addressEdit, channelEdit, unitEdit})
        edit->setMaximumWidth(digit * 10);
    valueEdit->setMinimumWidth(digit * 8);
    for (QPushButton *button : {getButton, setButton})
        button->setMaximumWidth(digit * 8);
    connect(itemBox, &QComboBox::currentTextChanged, itemBox,
            &QWidget::setToolTip); // where the name does not fit

    controllerBox->setObjectName(QStringLiteral("controllerBox"));
    lineEdit->setObjectName(QStringLiteral("lineEdit"));
    addressEdit->setObjectName(QStringLiteral("addressEdit"));
    channelEdit->setObjectName(QStringLiteral("channelEdit"));
    itemLabel->setObjectName(QStringLiteral("itemLabel"));
    itemBox->setObjectName(QStringLiteral("itemBox"));
    valueEdit->setObjectName(QStringLiteral("valueEdit"));
    unitEdit->setObjectName(QStringLiteral("unitEdit"));
    getButton->setObjectName(QStringLiteral("getButton"));
    setButton->setObjectName(QStringLiteral("setButton"));

    connect(getButton, &QPushButton::clicked, this, &TerminalCommandGeneration::sendGet);
    connect(setButton, &QPushButton::clicked, this, &TerminalCommandGeneration::sendSet);
    connect(controllerBox, QOverload<int>::of(&QComboBox::currentIndexChanged), this,
            &TerminalCommandGeneration::controllerSelected);
    for (QLineEdit *edit : {lineEdit, addressEdit, channelEdit})
        connect(edit, &QLineEdit::editingFinished, this, &TerminalCommandGeneration::levelFromFields);

    mainData->dataAccess->subscribeStructureChanged(this);
}

TerminalCommandGeneration::~TerminalCommandGeneration()
{
    mainData->dataAccess->unsubscribe(this);
}

void TerminalCommandGeneration::addColumn(QGridLayout *grid, int column, QWidget *caption, QWidget *input)
{
    grid->addWidget(caption, 0, column);
    grid->addWidget(input, 1, column);
    if (auto *label = qobject_cast<QLabel *>(caption))
        label->setBuddy(input);
}

void TerminalCommandGeneration::sendText(KD::EventType type, const QString &text)
{
    KdChildEvent event(type, text);
    observer->processChildEvent(event);
}

// Requests

void TerminalCommandGeneration::sendGet()
{
    sendRequest(QStringLiteral("getItem"), QString(), QString());
}

void TerminalCommandGeneration::sendSet()
{
    sendRequest(QStringLiteral("setItem"), valueEdit->text(), unitEdit->text());
}

void TerminalCommandGeneration::sendRequest(const QString &commandName, const QString &value,
                                            const QString &unit)
{
    sendText(KD::Request,
             command_terminal::requestText({commandName, lineEdit->text(), addressEdit->text(),
                                            channelEdit->text(), itemBox->currentText(), value, unit}));
}

void TerminalCommandGeneration::controllerSelected(int index)
{
    sendText(KD::ControllerChosen, controllerBox->itemData(index).toString());
}

// Items

void TerminalCommandGeneration::levelFromFields()
{
    OrbItemId id = itemId;
    id.type = OrbItemId::System;
    if (!channelEdit->text().isEmpty())
        id.type = OrbItemId::Channel;
    else if (!addressEdit->text().isEmpty())
        id.type = addressEdit->text().toUInt() >= FirstCrateAddress ? OrbItemId::Crate : OrbItemId::Module;
    else if (!lineEdit->text().isEmpty())
        id.type = OrbItemId::Line;
    refreshItemNames(id);
}

void TerminalCommandGeneration::refreshItemNames(const OrbItemId &id)
{
    if (id.type == itemId.type)
        return;
    itemBox->clear();
    valueEdit->clear();
    unitEdit->clear();
    itemId = id;
    if (itemId.type == OrbItemId::Line)
        itemId.type =
            OrbItemId::System; // a line has no items of its own and offers the system's: this is meant

    QVector<QString> names;
    mainData->dataAccess->getOrbItemNames(itemId, names, false);
    std::sort(names.begin(), names.end());
    for (const QString &name : std::as_const(names))
        itemBox->addItem(name);
    // Where the form has no room for the longest name, the opened list shows it all the same.
    itemBox->view()->setMinimumWidth(itemBox->sizeHint().width());

    switch (itemId.type) {
    case OrbItemId::System:
        itemLabel->setText(tr("System Item"));
        break;
    case OrbItemId::Line:
        itemLabel->setText(tr("Line Item")); // never shown, since a line is stored as the system
        break;
    case OrbItemId::Crate:
        itemLabel->setText(tr("Crate Item"));
        break;
    case OrbItemId::Module:
        itemLabel->setText(tr("Module Item"));
        break;
    case OrbItemId::Channel:
        itemLabel->setText(tr("Channel Item"));
        break;
    default:
        itemLabel->setText(tr("Item"));
        break;
    }
}

// Controllers

bool TerminalCommandGeneration::wantsNotification(DlNotificationQuery &query)
{
    return query.kind == DlNotificationQuery::StructureChanged;
}

void TerminalCommandGeneration::structureChanged(const OrbItemId &)
{
    QCoreApplication::postEvent(
        this,
        new KdCustomQEvent(static_cast<QEvent::Type>(KD::CustomEventType), KD::StructureChangedSubCode));
}

void TerminalCommandGeneration::customEvent(QEvent *event)
{
    if (event->type() != static_cast<QEvent::Type>(KD::CustomEventType))
        return;
    const auto *notice = dynamic_cast<KdCustomQEvent *>(event);
    if (notice && notice->getSubCode() == KD::StructureChangedSubCode)
        refreshControllers();
}

// Lists the controllers; an entry of that display text is selected, the last one of several.
bool TerminalCommandGeneration::fillControllers(const QString *selectedText)
{
    QVector<QPair<QString, QString>> controllers;
    mainData->dataAccess->getAllControllerNames(controllers);
    bool found = false;
    for (const auto &[connectionName, displayText] : std::as_const(controllers)) {
        controllerBox->addItem(displayText, connectionName);
        if (selectedText && displayText == *selectedText) {
            controllerBox->setCurrentIndex(controllerBox->count() - 1);
            found = true;
        }
    }
    if (controllers.isEmpty())
        controllerBox->addItem(tr("No connection"));
    // The box keeps the least width that it had with its first entry; a controller's name is to be read whole.
    controllerBox->setMinimumWidth(controllerBox->sizeHint().width());
    return found;
}

void TerminalCommandGeneration::refreshControllers()
{
    const QString remembered = controllerBox->currentText();
    controllerBox->clear();
    const bool found = fillControllers(&remembered);
    const QVariant firstConnection = controllerBox->itemData(0);
    if (!found && firstConnection.isValid()) {
        const int connection = mainData->dataAccess->getOrbConnectionIndex(firstConnection.toString());
        if (connection >= 0) {
            OrbItemId system(OrbItemId::System);
            system.connection = connection;
            setItemId(system);
        }
    }
    sendText(KD::ControllerChosen, controllerBox->currentText());
}

QString TerminalCommandGeneration::readSystemItem(const OrbItemId &id, const QString &itemName) const
{
    OrbItemId systemItem(OrbItemId::System);
    systemItem.connection = id.connection;
    systemItem.connectionName = id.connectionName;
    systemItem.itemName = itemName;
    OrbItemValue value(systemItem);
    mainData->dataAccess->readItemValue(value);
    return value.value().toString();
}

void TerminalCommandGeneration::setItemId(const OrbItemId &id)
{
    refreshItemNames(id);
    itemId = id;

    controllerBox->clear();
    fillControllers(nullptr);
    controllerBox->setCurrentIndex(0);

    const QString controllerName =
        readSystemItem(id, OrbItemDefinitions::getItemNameSystemStatuscontrollerName());
    const int entry = controllerName.isEmpty() ? -1 : controllerBox->findText(controllerName);
    if (entry >= 0)
        controllerBox->setCurrentIndex(entry);
    const QString connectionName =
        readSystemItem(id, OrbItemDefinitions::getItemNameSystemStatusconnectionName());

    lineEdit->clear();
    addressEdit->clear();
    channelEdit->clear();
    if (id.type >= OrbItemId::Line && id.type <= OrbItemId::Channel)
        lineEdit->setText(QString::number(id.line));
    if (id.type >= OrbItemId::Crate && id.type <= OrbItemId::Channel)
        addressEdit->setText(QString::number(id.address));
    if (id.type == OrbItemId::Channel)
        channelEdit->setText(QString::number(id.channel));

    sendText(KD::ControllerChosen, connectionName);
}
