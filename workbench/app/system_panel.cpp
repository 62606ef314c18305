#include "workbench/app/system_panel.h"

#include "workbench/app/system_model.h"
#include "workbench/app/system_search.h"
#include "workbench/app/system_view.h"

#include <QAction>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace workbench
{

SystemPanel::SystemPanel(SystemModel &model, QWidget *parent)
    : QWidget(parent),
      line(new QLineEdit(this)),
      result(new QLabel(this)),
      tree(new SystemView(model, this)),
      search(new SystemSearch(model, *tree, this))
{
    line->setObjectName(QStringLiteral("systemSearch"));
    line->setAccessibleName(tr("Search the system"));
    line->setPlaceholderText(tr("Search: name, address or state (Ctrl+F)"));
    line->setToolTip(tr("<p>The beginning of words of a name or a state, or of an address: <i>tripped</i>, "
                        "<i>module 3</i>, <i>0.2.7</i>, <i>ramp 0.1.</i></p><p>Esc ends the search.</p>"));
    line->setClearButtonEnabled(true);
    line->installEventFilter(this);
    result->setObjectName(QStringLiteral("systemSearchResult"));
    result->hide();

    auto *row = new QHBoxLayout;
    row->addWidget(line, 1);
    row->addWidget(result);
    auto *column = new QVBoxLayout(this);
    const int gap = fontMetrics().height() / 4;
    column->setContentsMargins(gap, gap, gap, 0);
    column->setSpacing(gap);
    column->addLayout(row);
    column->addWidget(tree, 1);
    setFocusProxy(tree);

    // Only where the system has the focus: in the terminals the keys are theirs.
    auto *find = new QAction(tr("Search"), this);
    find->setShortcut(QKeySequence::Find);
    find->setShortcutContext(Qt::WidgetWithChildrenShortcut);
    connect(find, &QAction::triggered, this, &SystemPanel::beginSearch);
    addAction(find);

    connect(line, &QLineEdit::textChanged, search, &SystemSearch::search);
    connect(search, &SystemSearch::changed, this, &SystemPanel::showResult);
}

void SystemPanel::beginSearch()
{
    line->setFocus(Qt::ShortcutFocusReason);
    line->selectAll();
}

bool SystemPanel::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != line || event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    switch (static_cast<QKeyEvent *>(event)->key()) {
    case Qt::Key_Escape:
        endSearch();
        return true;
    case Qt::Key_Down:
    case Qt::Key_Return:
    case Qt::Key_Enter:
        tree->setFocus(Qt::OtherFocusReason);
        return true;
    default:
        return QWidget::eventFilter(watched, event);
    }
}

void SystemPanel::hideEvent(QHideEvent *event)
{
    search->pause();
    QWidget::hideEvent(event);
}

void SystemPanel::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    search->resume();
}

void SystemPanel::showResult()
{
    result->setVisible(search->isActive());
    if (!search->isActive())
        return;
    if (search->hits() > 0)
        result->setText((search->isComplete() ? tr("%1 found") : tr("%1 found so far")).arg(search->hits()));
    else
        result->setText(search->isComplete() ? tr("Nothing found") : tr("Searching"));
}

void SystemPanel::endSearch()
{
    line->clear();
    tree->setFocus(Qt::OtherFocusReason);
}

} // namespace workbench
