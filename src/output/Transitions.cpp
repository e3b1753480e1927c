// Changing the slide on the output.
#include "model/AppModel.h"

void AppModel::startTransition(const std::optional<PdfPage>& previous)
{
    (void)previous;
    // Until fades exist every change is a cut to the current page.
    const PdfDocumentPtr doc = document.peek();
    incomingSlideImage.set(doc ? renderSlide(PdfPage{doc, pageIndex.peek()}) : nullptr);
    if (auto task = transitionTask.peek())
        task->cancel();
    outgoingSlideImage.set(nullptr);
    transitionProgress.set(1.0);
}
