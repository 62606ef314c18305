#pragma once

#include <QWidget>

class QLabel;
class QLineEdit;

namespace workbench
{

class SystemModel;
class SystemSearch;
class SystemView;

/// The tree of the system with a line to search it. GUI thread only.
class SystemPanel : public QWidget
{
    Q_OBJECT

public:
    /// The model is kept and outlives the panel.
    explicit SystemPanel(SystemModel &model, QWidget *parent = nullptr);

    SystemView &view() { return *tree; }
    QLineEdit &searchLine() { return *line; }

    /// Puts the cursor into the search line.
    void beginSearch();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void showResult();
    void endSearch();

    QLineEdit *line;
    QLabel *result;
    SystemView *tree;
    SystemSearch *search;
};

} // namespace workbench
