#pragma once

#include "platform/PdfEngine.h"

#include <memory>

// PDF documents read and rendered with MuPDF. Safe to call from the main
// thread while ahead-renders run on up to two workers.
class MuPdfEngine final : public PdfEngine {
public:
    MuPdfEngine();
    ~MuPdfEngine() override;
    std::variant<PdfDocumentPtr, PdfOpenError> open(const QString& path) override;

    struct Base;

private:
    std::variant<PdfDocumentPtr, PdfOpenError> openChecked(const QString& path);

    std::shared_ptr<Base> base_;
};
