#pragma once

#include "platform/PdfEngine.h"

#include <cstddef>
#include <memory>

// PDF documents read and rendered with MuPDF on two workers: one serves only
// the pictures the operator waits for, the other those too and then renders
// ahead and thumbnails. Memory stays bounded however many files are open:
// pictures, display lists and parsed files are held within the caps below,
// and a file far from the operator keeps only its page sizes.
class MuPdfEngine final : public PdfEngine {
public:
    // Pictures larger than a thumbnail box, and thumbnails, each within a byte budget.
    static constexpr std::size_t slideBudget = 96u << 20;
    static constexpr std::size_t thumbnailBudget = 16u << 20;
    // Display lists kept per file.
    static constexpr int listsPerDocument = 16;
    // Files kept parsed besides those near the operator.
    static constexpr int spareDocuments = 2;
    // The library's own store (decoded images, fonts).
    static constexpr std::size_t storeBudget = 96u << 20;

    // What the engine holds now.
    struct Usage {
        int pictures = 0;
        std::size_t slideBytes = 0;
        std::size_t thumbnailBytes = 0;
        int lists = 0;
        int parsedDocuments = 0;
        int nearDocuments = 0;
    };

    MuPdfEngine();
    ~MuPdfEngine() override;
    std::variant<PdfDocumentPtr, PdfOpenError> open(const QString& path) override;
    Usage usage() const;
    // Returns once the workers hold no work at all, nothing queued either:
    // for tools and fuzzing, which look at memory between one file and the next.
    void waitUntilIdle() const;

    struct Base;

private:
    std::variant<PdfDocumentPtr, PdfOpenError> openChecked(const QString& path);

    std::shared_ptr<Base> base_;
};
