#pragma once

#include "workbench/app/terminal_driver.h"

namespace workbench
{

/// Operates the Python terminal. It is ready once its interpreter has started. GUI thread only.
class PythonTerminalDriver : public TerminalDriver
{
    Q_DECLARE_TR_FUNCTIONS(workbench::PythonTerminalDriver)

public:
    using TerminalDriver::TerminalDriver;

    QString missingControl() const override;
    bool isReady() const override;
    bool prepare(const QString &controller, QString &error) override;
    bool isBusy() const override;
    bool waitsForUser() const override;
    QString obstacle() const override;

private:
    QString activity() const;
};

} // namespace workbench
