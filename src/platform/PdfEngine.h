#pragma once

#include <QImage>
#include <QSize>
#include <QSizeF>
#include <QString>

#include <memory>
#include <optional>
#include <variant>

// One open PDF. Every call is safe from the main thread; implementations may
// render ahead on workers, but each call still returns its own result.
class PdfDocument {
public:
    virtual ~PdfDocument() = default;

    virtual QString path() const = 0;
    virtual int pageCount() const = 0;
    // Media-box size in points; an empty size for an index out of range.
    virtual QSizeF pageSize(int index) const = 0;
    // The page fitted into `box` (pixels) with its aspect kept; null when the
    // page does not exist or cannot be drawn.
    virtual std::shared_ptr<const QImage> render(int index, QSize box) const = 0;
    // A hint that `render(index, box)` will be asked for soon: an
    // implementation may start it on a worker so the later call is instant.
    virtual void prefetch(int /*index*/, QSize /*box*/) const {}
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
