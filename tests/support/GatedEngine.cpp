#include "GatedEngine.h"

#include <algorithm>

namespace {

class TicketBehindGate final : public RenderTicket {
public:
    explicit TicketBehindGate(std::shared_ptr<bool> cancelled) : cancelled_(std::move(cancelled)) {}
    void cancel() override
    {
        *cancelled_ = true;
        if (inner)
            inner->cancel();
    }
    RenderTicketPtr inner;

private:
    std::shared_ptr<bool> cancelled_;
};

class GatedDocument final : public PdfDocument {
public:
    GatedDocument(PdfDocumentPtr inner, GatedEngine& gate) : inner_(std::move(inner)), gate_(gate) {}
    QString path() const override { return inner_->path(); }
    int pageCount() const override { return inner_->pageCount(); }
    QSizeF pageSize(int index) const override { return inner_->pageSize(index); }
    std::shared_ptr<const QImage> render(int index, QSize box) const override
    {
        ++gate_.waitingCalls;
        return inner_->render(index, box);
    }
    std::shared_ptr<const QImage> cached(int index, QSize box) const override { return inner_->cached(index, box); }
    RenderTicketPtr request(int index, QSize box, RenderUrgency urgency, RenderDone done) const override
    {
        auto cancelled = std::make_shared<bool>(false);
        auto ticket = std::make_shared<TicketBehindGate>(cancelled);
        if (gate_.letThrough)
            ticket->inner = inner_->request(index, box, urgency, std::move(done));
        else
            gate_.held.push_back({inner_, index, box, urgency, std::move(done), cancelled});
        return ticket;
    }
    void setNear(bool near) const override { inner_->setNear(near); }

private:
    PdfDocumentPtr inner_;
    GatedEngine& gate_;
};

}

std::variant<PdfDocumentPtr, PdfOpenError> GatedEngine::open(const QString& path)
{
    auto opened = inner->open(path);
    if (auto* doc = std::get_if<PdfDocumentPtr>(&opened))
        return PdfDocumentPtr(std::make_shared<GatedDocument>(*doc, *this));
    return opened;
}

void GatedEngine::release(bool reversed)
{
    std::deque<Held> now;
    now.swap(held);
    if (reversed)
        std::reverse(now.begin(), now.end());
    for (auto& h : now) {
        if (*h.cancelled)
            continue;
        // Answered through the real workers; a later cancel still reaches
        // the callback through the flag.
        auto cancelled = h.cancelled;
        RenderDone done = std::move(h.done);
        h.inner->request(h.index, h.box, h.urgency, [cancelled, done](std::shared_ptr<const QImage> image) {
            if (!*cancelled && done)
                done(image);
        });
    }
}

int GatedEngine::waiting(bool thumbnails) const
{
    return int(std::count_if(held.begin(), held.end(), [&](const Held& h) {
        return !*h.cancelled && (h.box == QSize(320, 320)) == thumbnails;
    }));
}
