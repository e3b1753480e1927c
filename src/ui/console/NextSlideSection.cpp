#include "ui/console/NextSlideSection.h"

#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "ui/console/ConsoleStyle.h"
#include "ui/console/PagePreview.h"

#include <QLabel>
#include <QVBoxLayout>

NextSlideSection::NextSlideSection(AppModel& model, QWidget* parent)
    : ConsolePart(model, parent)
{
    auto* layout = beginSection(QStringLiteral("next"), QStringLiteral("media-skip-forward"), ConsoleStyle::mark());
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
    const auto page = model_.upcomingPage();
    caption_->setText(label.value_or(QString()));
    caption_->setVisible(label.has_value());
    ++generation_;
    if (pending_)
        pending_->cancel();
    pending_.reset();
    if (!page) {
        preview_->show(nullptr, L10n::t(QStringLiteral("set.end")));
        return;
    }
    // Within the file the strip's thumbnail is at hand and costs nothing, so
    // a press paints the stage without waiting for this preview.
    if (page->document == model_.document()) {
        const auto& thumbnails = model_.thumbnails();
        if (const auto it = thumbnails.find(page->index); it != thumbnails.end() && it->second) {
            preview_->show(it->second, QString());
            return;
        }
    }
    // The next file's first page, or a thumbnail not yet made: asked of the
    // engine's workers at the preview's size, so the console never waits on
    // a render; a later page change cancels it.
    const QSize box = (QSizeF(preview_->size()) * preview_->devicePixelRatioF()).toSize();
    if (auto ready = page->document->cached(page->index, box)) {
        preview_->show(ready, QString());
        return;
    }
    pending_ = page->document->request(page->index, box, RenderUrgency::thumbnail,
                                       [this, wanted = generation_](std::shared_ptr<const QImage> image) {
                                           if (wanted == generation_)
                                               preview_->show(image, QString());
                                       });
}

NextSlideSection::~NextSlideSection()
{
    if (pending_)
        pending_->cancel();
}
