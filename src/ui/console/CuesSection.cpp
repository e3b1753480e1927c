#include "ui/console/CuesSection.h"

#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "ui/console/ConsoleStyle.h"
#include "ui/console/SetListView.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

CuesSection::CuesSection(AppModel& model, QWidget* parent)
    : ConsolePart(model, parent)
{
    auto* layout = beginSection(QStringLiteral("bookmarks"), QStringLiteral("bookmark-new"), ConsoleStyle::orange());
    list_ = new QTreeWidget(this);
    list_->setObjectName(QStringLiteral("cueList"));
    list_->setColumnCount(2);
    list_->setHeaderHidden(true);
    list_->setRootIsDecorated(false);
    list_->setUniformRowHeights(true);
    list_->header()->setStretchLastSection(false);
    list_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    list_->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->setContextMenuPolicy(Qt::DefaultContextMenu);
    list_->installEventFilter(this);
    list_->viewport()->installEventFilter(this);
    layout->addWidget(list_);
    connect(list_, &QTreeWidget::itemClicked, this, [this](QTreeWidgetItem* item) {
        model_.goToPage(item->data(0, Qt::UserRole).toInt());
    });
    hint_ = new QLabel(this);
    hint_->setWordWrap(true);
    hint_->setForegroundRole(QPalette::PlaceholderText);
    layout->addWidget(hint_);
    add_ = new QPushButton(ConsoleStyle::icon(QStringLiteral("bookmark-new")), QString(), this);
    connect(add_, &QPushButton::clicked, this, [this] { model_.promptAddBookmark(); });
    layout->addWidget(add_);
    startFollowing();
}

void CuesSection::removeRow(int row)
{
    const auto cues = model_.currentCues();
    if (row >= 0 && row < static_cast<int>(cues.size()))
        model_.removeBookmark(cues[static_cast<std::size_t>(row)].id);
}

bool CuesSection::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == list_ && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Delete || key == Qt::Key_Backspace) {
            removeRow(list_->indexOfTopLevelItem(list_->currentItem()));
            return true;
        }
    }
    if (watched == list_->viewport() && event->type() == QEvent::ContextMenu) {
        auto* menuEvent = static_cast<QContextMenuEvent*>(event);
        QTreeWidgetItem* item = list_->itemAt(menuEvent->pos());
        if (!item)
            return true;
        QMenu menu(this);
        menu.addAction(ConsoleStyle::icon(QStringLiteral("edit-delete")), SetListView::removeText(), this,
                       [this, row = list_->indexOfTopLevelItem(item)] { removeRow(row); });
        menu.exec(menuEvent->globalPos());
        return true;
    }
    return ConsolePart::eventFilter(watched, event);
}

void CuesSection::refresh()
{
    setVisible(model_.document() != nullptr);
    const auto cues = model_.currentCues();
    const int current = model_.pageIndex();
    while (list_->topLevelItemCount() > static_cast<int>(cues.size()))
        delete list_->takeTopLevelItem(list_->topLevelItemCount() - 1);
    for (int i = 0; i < static_cast<int>(cues.size()); ++i) {
        const CueBookmark& cue = cues[static_cast<std::size_t>(i)];
        QTreeWidgetItem* item = list_->topLevelItem(i);
        if (!item) {
            item = new QTreeWidgetItem(list_);
            item->setIcon(0, ConsoleStyle::icon(QStringLiteral("bookmark-new")));
            item->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
        }
        item->setText(0, cue.title);
        item->setText(1, QString::number(cue.pageIndex + 1));
        item->setData(0, Qt::UserRole, cue.pageIndex);
        QFont font = list_->font();
        font.setBold(cue.pageIndex == current);
        item->setFont(0, font);
    }
    const int rowHeight = cues.empty() ? 0 : list_->sizeHintForRow(0);
    list_->setFixedHeight(std::min(static_cast<int>(cues.size()), 6) * rowHeight + 2 * list_->frameWidth() + 2);
    list_->setVisible(!cues.empty());
    hint_->setText(L10n::t(QStringLiteral("cues.hint")));
    hint_->setVisible(cues.empty());
    add_->setText(L10n::t(QStringLiteral("bookmark.this")));
}
