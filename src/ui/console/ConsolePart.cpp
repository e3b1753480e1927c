#include "ui/console/ConsolePart.h"

#include "model/Observation.h"
#include "ui/console/SidebarHeader.h"

#include <QVBoxLayout>

ConsolePart::ConsolePart(AppModel& model, QWidget* parent)
    : QWidget(parent)
    , model_(model)
{
}

int ConsolePart::refreshCount() const
{
    return follower_ ? follower_->updateCount() : 0;
}

void ConsolePart::startFollowing()
{
    follower_ = new obs::Follower([this] { refresh(); }, this);
    follower_->start();
}

QVBoxLayout* ConsolePart::beginSection(const QString& titleKey, const QString& iconName, const QColor& tint)
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(new SidebarHeader(model_, titleKey, iconName, tint, this));
    return layout;
}
