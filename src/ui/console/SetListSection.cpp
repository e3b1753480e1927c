#include "ui/console/SetListSection.h"

#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "ui/console/ConsoleStyle.h"
#include "ui/console/SetListView.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

SetListSection::SetListSection(AppModel& model, QWidget* parent)
    : ConsolePart(model, parent)
{
    auto* layout = beginSection(QStringLiteral("set"), QStringLiteral("view-list-details"), ConsoleStyle::sky());
    list_ = new SetListView(model, this);
    list_->setObjectName(QStringLiteral("setList"));
    layout->addWidget(list_);
    empty_ = new QLabel(this);
    empty_->setObjectName(QStringLiteral("setEmpty"));
    empty_->setWordWrap(true);
    empty_->setForegroundRole(QPalette::PlaceholderText);
    layout->addWidget(empty_);
    // Selecting a row is a click: keys belong to the clicker.
    connect(list_, &QListWidget::itemClicked, this, [this](QListWidgetItem* item) {
        model_.selectPlaylistItem(item->data(Qt::UserRole).toUuid());
    });
    const auto button = [&](const QString& icon, auto action) {
        auto* b = new QPushButton(ConsoleStyle::icon(icon), QString(), this);
        connect(b, &QPushButton::clicked, this, action);
        layout->addWidget(b);
        return b;
    };
    add_ = button(QStringLiteral("list-add"), [this] { model_.presentAddToPlaylistPanel(); });
    openFolder_ = button(QStringLiteral("folder-open"), [this] { model_.presentFolderPanel(); });
    save_ = button(QStringLiteral("document-save"), [this] { model_.presentSaveShowPanel(false); });
    startFollowing();
}

void SetListSection::refresh()
{
    const auto& set = model_.playlist();
    const int current = model_.playlistIndex();
    // Rows are rebuilt only when what they show changes, so a drag or the
    // selection survives a page turn.
    if (list_->count() != static_cast<int>(set.size()))
        list_->clear();
    for (int i = 0; i < static_cast<int>(set.size()); ++i) {
        const PlaylistEntry& entry = set[static_cast<std::size_t>(i)];
        const int cues = static_cast<int>(entry.cues.size());
        const QString counts = cues > 0 ? L10n::t(QStringLiteral("playlist.pages_cues"), entry.pageCount, cues)
                                        : L10n::t(QStringLiteral("playlist.pages"), entry.pageCount);
        const QString text = entry.title + u'\n' + counts;
        QListWidgetItem* item = list_->item(i);
        if (!item) {
            item = new QListWidgetItem(list_);
            item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled);
        }
        if (item->text() != text)
            item->setText(text);
        item->setToolTip(entry.url);
        item->setData(Qt::UserRole, entry.id);
        item->setIcon(ConsoleStyle::icon(i == current ? QStringLiteral("media-playback-start")
                                                      : QStringLiteral("x-office-document")));
        QFont font = list_->font();
        font.setBold(i == current);
        item->setFont(font);
    }
    if (!set.empty() && current < list_->count())
        list_->setCurrentRow(current);
    list_->setVisible(!set.empty());
    // Rows are two lines: the list grows with the set up to a few rows.
    const int rowHeight = list_->count() ? list_->sizeHintForRow(0) : 0;
    list_->setFixedHeight(std::min(list_->count(), 6) * rowHeight + 2 * list_->frameWidth() + 2);
    empty_->setText(L10n::t(QStringLiteral("playlist.empty")));
    empty_->setVisible(set.empty());
    add_->setText(L10n::t(QStringLiteral("add.pdf_ellipsis")));
    openFolder_->setText(L10n::t(QStringLiteral("open.folder_ellipsis")));
    save_->setText(L10n::t(QStringLiteral("save.show_ellipsis")));
    save_->setEnabled(!set.empty());
}
