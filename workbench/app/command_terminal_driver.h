#pragma once

#include "workbench/app/terminal_driver.h"

class QComboBox;

namespace workbench
{

/// Operates the command terminal. It is ready once it has learned which controllers there are. GUI thread only.
class CommandTerminalDriver : public TerminalDriver
{
    Q_DECLARE_TR_FUNCTIONS(workbench::CommandTerminalDriver)

public:
    explicit CommandTerminalDriver(QWidget &tool);

    QString missingControl() const override;
    bool isReady() const override;
    /// Finds the controller by display text or connection name; an error names those there are.
    bool prepare(const QString &controller, QString &error) override;
    bool isBusy() const override;
    bool waitsForUser() const override;
    QString obstacle() const override;

private:
    QComboBox *const controllerBox;
};

} // namespace workbench
