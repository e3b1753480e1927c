#include "ui/console/ConsolePart.h"

#include "model/Observation.h"

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
