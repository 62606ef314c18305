#include "workbench/app/message_log.h"

#include "workbench/app/message_log_model.h"
#include "workbench/app/plant_watcher.h"

#include <QAction>
#include <QClipboard>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QSortFilterProxyModel>
#include <QSplitter>
#include <QStyle>
#include <QTableView>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>

namespace workbench
{

namespace
{

/// Looks for a text in all that a request is about, also in what the table has no room for.
class Filter : public QSortFilterProxyModel
{
public:
    Filter(const MessageLogModel &model, QObject *parent) : QSortFilterProxyModel(parent), requests(model) { }

    void setText(const QString &looked)
    {
        text = looked.trimmed();
        invalidateFilter();
    }

protected:
    bool filterAcceptsRow(int row, const QModelIndex &) const override
    {
        return text.isEmpty() || requests.lineOf(row).contains(text, Qt::CaseInsensitive);
    }

private:
    const MessageLogModel &requests;
    QString text;
};

} // namespace

MessageLog::MessageLog(PlantWatcher &watcher_, QWidget *parent)
    : QWidget(parent),
      watcher(watcher_),
      requests(new MessageLogModel(this)),
      filterLine(new QLineEdit(this)),
      count(new QLabel(this)),
      view(new QTableView(this)),
      details(new QPlainTextEdit(this)),
      copyAction(new QAction(tr("Copy"), this))
{
    setObjectName(QStringLiteral("messageLog"));
    setAccessibleName(tr("Messages"));
    auto *filter = new Filter(*requests, this);
    filtered = filter;
    filtered->setSourceModel(requests);

    filterLine->setObjectName(QStringLiteral("messageFilter"));
    filterLine->setAccessibleName(tr("Filter the messages"));
    filterLine->setPlaceholderText(tr("Filter: any text of request, answer or result"));
    filterLine->setClearButtonEnabled(true);
    filterLine->installEventFilter(this);
    connect(filterLine, &QLineEdit::textChanged, this, [this, filter](const QString &text) {
        filter->setText(text);
        showCount();
        if (isAtEnd)
            view->scrollToBottom();
    });
    details->setObjectName(QStringLiteral("messageDetails"));
    details->setAccessibleName(tr("The whole message"));
    details->setReadOnly(true);
    details->setTabChangesFocus(true);
    details->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    details->setPlaceholderText(tr("Choose a message to read the whole of it."));
    copyAction->setShortcut(QKeySequence::Copy);
    copyAction->setShortcutContext(Qt::WidgetShortcut);
    connect(copyAction, &QAction::triggered, this, &MessageLog::copy);
    buildTable();
    layOut();
    showCount();

    connect(&watcher, &PlantWatcher::happened, requests, &MessageLogModel::take);
    connect(requests, &QAbstractItemModel::rowsInserted, this, &MessageLog::showCount);
    connect(requests, &QAbstractItemModel::dataChanged, this,
            [this](const QModelIndex &first, const QModelIndex &last) {
                if (shown.isValid() && first.row() <= shown.row() && shown.row() <= last.row())
                    showDetails();
            });
}

void MessageLog::copy()
{
    QModelIndexList rows = view->selectionModel()->selectedRows();
    std::sort(rows.begin(), rows.end());
    QStringList lines;
    for (const QModelIndex &row : qAsConst(rows))
        lines << requests->lineOf(filtered->mapToSource(row).row());
    if (!lines.isEmpty())
        QGuiApplication::clipboard()->setText(lines.join(QLatin1Char('\n')));
}

void MessageLog::clear()
{
    requests->clear();
    isAtEnd = true;
    showDetails();
    showCount();
}

bool MessageLog::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == filterLine && event->type() == QEvent::KeyPress
        && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape) {
        filterLine->clear();
        view->setFocus(Qt::OtherFocusReason);
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void MessageLog::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    watcher.setNeeded(this, true);
    watcher.poll(); // what happened while nobody looked
}

void MessageLog::hideEvent(QHideEvent *event)
{
    watcher.setNeeded(this, false);
    QWidget::hideEvent(event);
}

void MessageLog::buildTable()
{
    view->setObjectName(QStringLiteral("messageTable"));
    view->setAccessibleName(tr("Messages"));
    view->setModel(filtered);
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    view->setAlternatingRowColors(true);
    view->setShowGrid(false);
    view->setWordWrap(false);
    view->setTabKeyNavigation(false);
    view->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    view->setContextMenuPolicy(Qt::ActionsContextMenu);
    view->addAction(copyAction);
    QHeaderView *rows = view->verticalHeader();
    rows->hide();
    rows->setSectionResizeMode(QHeaderView::Fixed);
    rows->setDefaultSectionSize(fontMetrics().height() * 5 / 4);

    QHeaderView *columns = view->horizontalHeader();
    const QFontMetrics metrics = fontMetrics();
    const int margin = 2 * (style()->pixelMetric(QStyle::PM_HeaderMargin, nullptr, columns) + 4);
    const auto fit = [&](int column, const QString &longest) {
        const QString title = requests->headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
        columns->resizeSection(
            column, std::max(metrics.horizontalAdvance(longest), metrics.horizontalAdvance(title)) + margin);
    };
    fit(MessageLogModel::TimeColumn, QStringLiteral("88,888.888"));
    fit(MessageLogModel::ControllerColumn, QStringLiteral("controller 8"));
    fit(MessageLogModel::LatencyColumn, QStringLiteral("8,888.8"));
    fit(MessageLogModel::ResultColumn, tr("none: controller left") + QStringLiteral("888"));
    for (const int column : {MessageLogModel::RequestColumn, MessageLogModel::AnswerColumn})
        columns->setSectionResizeMode(column, QHeaderView::Stretch);
    columns->setHighlightSections(false);
    columns->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);

    const QScrollBar *bar = view->verticalScrollBar();
    connect(bar, &QScrollBar::valueChanged, this,
            [this, bar](int value) { isAtEnd = value == bar->maximum(); });
    // The range grows after the rows have come.
    connect(bar, &QScrollBar::rangeChanged, this, [this] {
        if (isAtEnd)
            view->scrollToBottom();
    });
    connect(view->selectionModel(), &QItemSelectionModel::currentRowChanged, this, &MessageLog::showDetails);
}

void MessageLog::layOut()
{
    const auto addButton = [this](QHBoxLayout &row, const QString &text, const QString &help) {
        auto *button = new QToolButton(this);
        button->setText(text);
        button->setToolTip(help);
        button->setFocusPolicy(Qt::TabFocus);
        row.addWidget(button);
        return button;
    };
    auto *top = new QHBoxLayout;
    top->addWidget(filterLine, 1);
    top->addWidget(count);
    connect(addButton(*top, tr("Copy"), tr("Copies the selected rows (Ctrl+C)")), &QToolButton::clicked, this,
            &MessageLog::copy);
    connect(addButton(*top, tr("Clear"), tr("Forgets the messages")), &QToolButton::clicked, this,
            &MessageLog::clear);
    auto *splitter = new QSplitter(Qt::Horizontal, this);
    splitter->addWidget(view);
    splitter->addWidget(details);
    splitter->setStretchFactor(0, 3);
    splitter->setStretchFactor(1, 1);
    auto *column = new QVBoxLayout(this);
    const int gap = fontMetrics().height() / 4;
    column->setContentsMargins(gap, gap, gap, 0);
    column->setSpacing(gap);
    column->addLayout(top);
    column->addWidget(splitter, 1);
    setFocusProxy(view);
}

void MessageLog::showDetails()
{
    const QModelIndex current = filtered->mapToSource(view->currentIndex());
    const bool isSame = shown.isValid() && shown == current.siblingAtColumn(0);
    shown = current.siblingAtColumn(0);
    const QString text = current.isValid() ? requestDetails(requests->at(current.row())) : QString();
    if (isSame && text == details->toPlainText())
        return;
    details->setPlainText(text);
}

void MessageLog::showCount()
{
    const int all = requests->rowCount();
    const int some = filtered->rowCount();
    count->setText(all == some ? tr("%1 messages").arg(all) : tr("%1 of %2 messages").arg(some).arg(all));
}

} // namespace workbench
