#pragma once

#include <QImage>
#include <QSize>
#include <QSizeF>
#include <QString>

#include <functional>
#include <memory>
#include <optional>
#include <variant>

// How soon a rendered page is wanted. Workers take the most urgent first; a
// render the operator waits for never queues behind one asked for ahead.
enum class RenderUrgency {
    shown,      // the operator waits for it: the stage or the output shows it next
    imminent,   // the page a number being typed names
    ahead,      // next, previous and cue pages
    thumbnail,  // the console's strip
};

// One render asked for with `PdfDocument::request`. Cancelling it means its
// callback never runs; the work itself stops when nobody else wants it.
class RenderTicket {
public:
    virtual ~RenderTicket() = default;
    virtual void cancel() = 0;
};

using RenderTicketPtr = std::shared_ptr<RenderTicket>;
using RenderDone = std::function<void(std::shared_ptr<const QImage>)>;

// One open PDF. `pageCount`, `cached`, `request` and `setNear` return at
// once and are the only calls the main thread makes; `pageSize` may load the
// page the first time it is asked, and `render` waits for the picture: both
// are for benchmarks, tests and tools.
class PdfDocument {
public:
    virtual ~PdfDocument() = default;

    virtual QString path() const = 0;
    virtual int pageCount() const = 0;
    // Media-box size in points; an empty size for an index out of range.
    virtual QSizeF pageSize(int index) const = 0;
    // The page fitted into `box` (pixels) with its aspect kept; null when the
    // page does not exist or cannot be drawn. Waits for the render.
    virtual std::shared_ptr<const QImage> render(int index, QSize box) const = 0;
    // The same picture if it is already rendered, else null; never renders.
    virtual std::shared_ptr<const QImage> cached(int index, QSize box) const = 0;
    // Renders on a worker; `done` (may be empty: a render ahead) later runs
    // on the main thread with the picture, or null when the page cannot be
    // drawn, unless the ticket was cancelled first.
    virtual RenderTicketPtr request(int index, QSize box, RenderUrgency urgency, RenderDone done) const = 0;
    // Whether the operator's position is in or beside this file. What is
    // heavy (parsed pages, display lists, pictures) goes while it is far and
    // comes back on a worker when it is asked for again.
    virtual void setNear(bool /*near*/) const {}
};

using PdfDocumentPtr = std::shared_ptr<PdfDocument>;

// One page of one document: what the model calls "a PDF page".
struct PdfPage {
    PdfDocumentPtr document;
    int index = 0;

    bool operator==(const PdfPage& other) const { return document == other.document && index == other.index; }
};

struct PdfOpenError {
    // Why, where the engine can tell: the operator is shown this in the
    // interface language; `reason` is the engine's own words, for tracing.
    enum class Kind { other, password, damaged, notPdf };
    Kind kind = Kind::other;
    QString reason;
};

class PdfEngine {
public:
    virtual ~PdfEngine() = default;
    // Opens the file at `path`. Never throws and never aborts: a missing,
    // damaged, encrypted or non-PDF file, or one that claims more than it
    // holds, gives an error with its kind and a short reason.
    virtual std::variant<PdfDocumentPtr, PdfOpenError> open(const QString& path) = 0;
};
