#pragma once

#include "platform/MuPdfEngine.h"

#include <deque>
#include <memory>

// The real engine behind a gate that holds its workers: a request is answered
// only when the test lets it through, so a test sees what the model does
// while every render is still running. Calls that would make the caller wait
// for a render are counted, to prove the main thread never makes them.
class GatedEngine final : public PdfEngine {
public:
    struct Held {
        PdfDocumentPtr inner;
        int index;
        QSize box;
        RenderUrgency urgency;
        RenderDone done;
        std::shared_ptr<bool> cancelled;
    };

    std::shared_ptr<MuPdfEngine> inner = std::make_shared<MuPdfEngine>();
    // Requests waiting behind the gate, oldest first.
    std::deque<Held> held;
    bool letThrough = false;  // requests go straight to the workers
    int waitingCalls = 0;     // `render` calls, which wait for the picture

    std::variant<PdfDocumentPtr, PdfOpenError> open(const QString& path) override;

    // Lets every held request through to the real workers, newest first when
    // `reversed` (their answers then come back out of page order).
    void release(bool reversed = false);
    // Requests held and not cancelled, of thumbnail size when `thumbnails`.
    int waiting(bool thumbnails) const;
};
