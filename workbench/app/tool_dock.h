#pragma once

#include <QDockWidget>

namespace workbench
{

/// The frame around one open tool. It says when the operator is about to hide it, so that the tool hears of it first.
class ToolDock : public QDockWidget
{
    Q_OBJECT

public:
    /// `parent` owns the dock; `permanentName` is the name under which the layout knows it.
    ToolDock(const QString &title, const QString &permanentName, QWidget *parent);

Q_SIGNALS:
    void aboutToHide();

protected:
    void closeEvent(QCloseEvent *event) override;
};

} // namespace workbench
