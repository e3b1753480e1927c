// Changing the slide on the output: a cut, or a cross-fade driven in 16 ms
// steps on the main thread.
#include "model/AppModel.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr double shortestFade = 0.04;
constexpr double fadeFloor = 0.12;
constexpr double frameStep = 0.016;

double ease(double u)
{
    const double p = std::clamp(u, 0.0, 1.0);
    if (p < 0.5)
        return 2 * p * p;
    const double q = 2 - 2 * p;
    return 1 - q * q / 2;
}
}

double AppModel::transitionEase(double u)
{
    return ease(u);
}

void AppModel::endTransition()
{
    if (auto task = transitionTask.peek())
        task->cancel();
    outgoingSlideImage.set(nullptr);
    transitionProgress.set(1.0);
}

void AppModel::startTransition(const std::optional<PdfPage>& previous, ImagePtr incoming)
{
    incomingSlideImage.set(std::move(incoming));

    const bool fades = transitionStyle.peek() == TransitionStyle::fade && transitionDuration.peek() > shortestFade
        && previous.has_value() && services_.scheduler;
    // Without a fade, or with nothing to drive one, the new slide shows at once.
    if (!fades) {
        endTransition();
        return;
    }

    if (auto task = transitionTask.peek())
        task->cancel();
    outgoingSlideImage.set(renderSlide(*previous));
    transitionProgress.set(0.0);
    auto task = std::make_shared<TaskHandle>();
    transitionTask.set(task);
    const double duration = std::max(transitionDuration.peek(), fadeFloor);
    runFadeStep(self_, task, services_.scheduler->now(), duration);
}

void AppModel::runFadeStep(std::weak_ptr<AppModel*> model, Task task, double start, double duration)
{
    // A cancelled fade ends without touching the model: a newer fade or a
    // cut (loading another file without animation) owns it.
    if (task->isCancelled())
        return;
    const double u = (services_.scheduler->now() - start) / duration;
    if (u >= 1) {
        transitionProgress.set(1.0);
        outgoingSlideImage.set(nullptr);
        return;
    }
    // Only the last write may be exactly 1: a step a hair before the end
    // could otherwise round up to it.
    transitionProgress.set(std::min(ease(u), std::nextafter(1.0, 0.0)));
    services_.scheduler->after(frameStep, [model, task, start, duration] {
        auto alive = model.lock();
        if (alive && *alive)
            (*alive)->runFadeStep(model, task, start, duration);
    });
}
