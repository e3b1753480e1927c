#include "ui/console/NextSlideSection.h"

#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "ui/console/ConsoleStyle.h"
#include "ui/console/PagePreview.h"
#include "ui/console/SidebarHeader.h"

#include <QLabel>
#include <QVBoxLayout>

NextSlideSection::NextSlideSection(AppModel& model, QWidget* parent)
    : ConsolePart(model, parent)
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(new SidebarHeader(model, QStringLiteral("next"), QStringLiteral("media-skip-forward"),
                                        ConsoleStyle::mark(), this));
    preview_ = new PagePreview(this);
    preview_->setObjectName(QStringLiteral("nextPreview"));
    preview_->setFixedHeight(148);
    layout->addWidget(preview_);
    caption_ = new QLabel(this);
    caption_->setObjectName(QStringLiteral("nextLabel"));
    QFont font = caption_->font();
    font.setWeight(QFont::DemiBold);
    font.setStyleHint(QFont::Monospace);
    font.setFamilies({QStringLiteral("DejaVu Sans Mono"), QStringLiteral("monospace")});
    caption_->setFont(font);
    caption_->setAlignment(Qt::AlignCenter);
    layout->addWidget(caption_);
    startFollowing();
}

void NextSlideSection::refresh()
{
    const auto label = model_.upcomingLabel();
    std::shared_ptr<const QImage> image;
    // Rendered ahead by the model at the slide size: usually at once.
    if (const auto page = model_.upcomingPage()) {
        const QSizeF box = model_.snapshotSize();
        image = page->document->render(page->index, box.toSize());
    }
    preview_->show(image, L10n::t(QStringLiteral("set.end")));
    caption_->setText(label.value_or(QString()));
    caption_->setVisible(label.has_value());
}
