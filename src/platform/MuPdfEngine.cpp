#include "MuPdfEngine.h"

#include <QFile>
#include <QFileInfo>
#include <QThreadPool>

#include <algorithm>
#include <cmath>
#include <array>
#include <condition_variable>
#include <future>
#include <list>
#include <map>
#include <mutex>
#include <tuple>

extern "C" {
#include <mupdf/fitz.h>
#include <mupdf/pdf.h>
}

// One base context with real locks; every call works in a context cloned
// from it, so any thread may render.
struct MuPdfEngine::Base {
    std::array<std::mutex, FZ_LOCK_MAX> locks;
    fz_locks_context lockContext{};
    fz_context* context = nullptr;

    Base()
    {
        lockContext.user = this;
        lockContext.lock = [](void* user, int lock) { static_cast<Base*>(user)->locks[std::size_t(lock)].lock(); };
        lockContext.unlock = [](void* user, int lock) { static_cast<Base*>(user)->locks[std::size_t(lock)].unlock(); };
        context = fz_new_context(nullptr, &lockContext, FZ_STORE_DEFAULT);
        if (!context)
            return;
        // Damaged files make MuPDF chatty; the caller gets the reason instead.
        fz_set_warning_callback(context, [](void*, const char*) {}, nullptr);
        fz_set_error_callback(context, [](void*, const char*) {}, nullptr);
        fz_try(context) fz_register_document_handlers(context);
        fz_catch(context) {}
    }
    ~Base()
    {
        if (context)
            fz_drop_context(context);
    }
};

namespace {

// A context cloned for the current call and dropped with it.
class LocalContext {
public:
    explicit LocalContext(fz_context* base) : ctx_(base ? fz_clone_context(base) : nullptr) {}
    ~LocalContext()
    {
        if (ctx_)
            fz_drop_context(ctx_);
    }
    LocalContext(const LocalContext&) = delete;
    LocalContext& operator=(const LocalContext&) = delete;
    fz_context* get() const { return ctx_; }

private:
    fz_context* ctx_;
};

QThreadPool& aheadPool()
{
    static QThreadPool* pool = [] {
        auto* p = new QThreadPool;
        p->setMaxThreadCount(2);
        return p;
    }();
    return *pool;
}

using RenderKey = std::tuple<int, int, int>;  // page, box width, box height
using ImagePtr = std::shared_ptr<const QImage>;

// The MuPDF calls that can fail, kept apart from C++ objects: fz_try
// unwinds with longjmp, which must not cross a C++ destructor.
fz_display_list* loadList(fz_context* ctx, fz_document* doc, int index)
{
    fz_display_list* list = nullptr;
    fz_page* page = nullptr;
    fz_var(list);
    fz_var(page);
    fz_try(ctx)
    {
        page = fz_load_page(ctx, doc, index);
        list = fz_new_display_list_from_page(ctx, page);
    }
    fz_always(ctx) fz_drop_page(ctx, page);
    fz_catch(ctx) list = nullptr;
    return list;
}

fz_pixmap* drawList(fz_context* ctx, fz_display_list* list, fz_matrix ctm, int w, int h)
{
    fz_pixmap* pix = nullptr;
    fz_device* dev = nullptr;
    fz_var(pix);
    fz_var(dev);
    fz_try(ctx)
    {
        pix = fz_new_pixmap(ctx, fz_device_rgb(ctx), w, h, nullptr, 0);
        fz_clear_pixmap_with_value(ctx, pix, 0xFF);
        dev = fz_new_draw_device(ctx, fz_identity, pix);
        fz_run_display_list(ctx, list, dev, ctm, fz_infinite_rect, nullptr);
        fz_close_device(ctx, dev);
    }
    fz_always(ctx) fz_drop_device(ctx, dev);
    fz_catch(ctx)
    {
        fz_drop_pixmap(ctx, pix);
        pix = nullptr;
    }
    return pix;
}

// Opens a PDF by its content; on failure returns null and sets the reason.
// A file's page tree states its own page count; a count larger than the
// number of objects in the file cannot be true (every page is an object of
// its own), and believing it would size everything after it from a lie.
fz_document* openPdf(fz_context* ctx, const char* path, PdfOpenError::Kind* kind, char* reason, size_t reasonSize)
{
    fz_document* doc = nullptr;
    fz_stream* stream = nullptr;
    fz_var(doc);
    fz_var(stream);
    *kind = PdfOpenError::Kind::damaged;
    fz_try(ctx)
    {
        stream = fz_open_file(ctx, path);
        doc = fz_open_document_with_stream(ctx, "application/pdf", stream);
        if (fz_needs_password(ctx, doc)) {
            *kind = PdfOpenError::Kind::password;
            fz_throw(ctx, FZ_ERROR_GENERIC, "The PDF is protected by a password.");
        }
        const int count = fz_count_pages(ctx, doc);
        if (count <= 0)
            fz_throw(ctx, FZ_ERROR_GENERIC, "The PDF has no pages.");
        pdf_document* pdf = pdf_specifics(ctx, doc);
        if (pdf && count > pdf_xref_len(ctx, pdf))
            fz_throw(ctx, FZ_ERROR_GENERIC, "The PDF claims more pages than it holds.");
    }
    fz_always(ctx) fz_drop_stream(ctx, stream);
    fz_catch(ctx)
    {
        fz_drop_document(ctx, doc);
        doc = nullptr;
        fz_strlcpy(reason, fz_caught_message(ctx), reasonSize);
    }
    return doc;
}

// A PDF starts with its header within the first kilobyte; without one the
// file is something else, whatever its name says.
bool hasPdfHeader(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    return file.read(1024).contains("%PDF-");
}

int pageCountOf(fz_context* ctx, fz_document* doc)
{
    int count = 0;
    fz_var(count);
    fz_try(ctx) count = fz_count_pages(ctx, doc);
    fz_catch(ctx) count = 0;
    return count;
}

// The library measures a page by its crop box; a slide is shown over its
// whole media box, in page space after the page's rotation.
fz_rect mediaBounds(fz_context* ctx, fz_page* page)
{
    const fz_rect cropped = fz_bound_page(ctx, page);
    pdf_page* pdfPage = pdf_page_from_fz_page(ctx, page);
    if (!pdfPage)
        return cropped;
    const fz_rect media = pdf_to_rect(ctx, pdf_dict_get_inheritable(ctx, pdfPage->obj, PDF_NAME(MediaBox)));
    if (fz_is_empty_rect(media))
        return cropped;
    fz_rect visible;
    fz_matrix pageMatrix;
    pdf_page_transform(ctx, pdfPage, &visible, &pageMatrix);
    return fz_transform_rect(media, pageMatrix);
}

bool pageBounds(fz_context* ctx, fz_document* doc, int index, fz_rect* out)
{
    fz_page* page = nullptr;
    bool ok = false;
    fz_var(page);
    fz_var(ok);
    fz_try(ctx)
    {
        page = fz_load_page(ctx, doc, index);
        *out = mediaBounds(ctx, page);
        ok = true;
    }
    fz_always(ctx) fz_drop_page(ctx, page);
    fz_catch(ctx) ok = false;
    return ok;
}

struct DocState {
    std::shared_ptr<MuPdfEngine::Base> base;
    QString path;
    // Guards the document itself: pages are loaded and listed one at a time.
    std::mutex documentMutex;
    fz_document* document = nullptr;
    std::vector<fz_rect> bounds;
    std::map<int, fz_display_list*> lists;

    // Rendered images, most recent first, at most `keepRecent` of each box
    // size and `keepTotal` in all, and renders in flight.
    std::mutex cacheMutex;
    std::list<std::pair<RenderKey, ImagePtr>> recent;
    std::map<RenderKey, std::shared_future<ImagePtr>> inFlight;
    static constexpr std::size_t keepRecent = 8;
    static constexpr std::size_t keepTotal = 3 * keepRecent;

    ~DocState()
    {
        LocalContext local(base->context);
        fz_context* ctx = local.get();
        if (!ctx)
            return;
        for (auto& [index, list] : lists)
            fz_drop_display_list(ctx, list);
        if (document)
            fz_drop_document(ctx, document);
    }

    // The page's display list, built once; the caller owns one reference.
    fz_display_list* displayList(fz_context* ctx, int index)
    {
        std::lock_guard guard(documentMutex);
        if (auto it = lists.find(index); it != lists.end())
            return fz_keep_display_list(ctx, it->second);
        fz_display_list* list = loadList(ctx, document, index);
        if (!list)
            return nullptr;
        lists[index] = list;
        return fz_keep_display_list(ctx, list);
    }

    ImagePtr rasterise(int index, QSize box)
    {
        if (index < 0 || index >= int(bounds.size()) || box.width() < 1 || box.height() < 1)
            return nullptr;
        LocalContext local(base->context);
        fz_context* ctx = local.get();
        if (!ctx)
            return nullptr;
        fz_display_list* list = displayList(ctx, index);
        if (!list)
            return nullptr;
        const fz_rect r = bounds[std::size_t(index)];
        const double pw = r.x1 - r.x0;
        const double ph = r.y1 - r.y0;
        if (pw <= 0 || ph <= 0) {
            fz_drop_display_list(ctx, list);
            return nullptr;
        }
        const double scale = std::min(box.width() / pw, box.height() / ph);
        const int w = std::max(1, int(std::lround(pw * scale)));
        const int h = std::max(1, int(std::lround(ph * scale)));
        // Scale each axis to the whole pixels so the page fills the image exactly.
        const fz_matrix ctm = fz_concat(fz_translate(-r.x0, -r.y0), fz_scale(float(w / pw), float(h / ph)));

        fz_pixmap* pix = drawList(ctx, list, ctm, w, h);
        fz_drop_display_list(ctx, list);
        if (!pix)
            return nullptr;
        const QImage wrapped(fz_pixmap_samples(ctx, pix), w, h, int(fz_pixmap_stride(ctx, pix)), QImage::Format_RGB888);
        auto result = std::make_shared<const QImage>(wrapped.convertToFormat(QImage::Format_ARGB32_Premultiplied));
        fz_drop_pixmap(ctx, pix);
        return result;
    }

    // Returns the cached image, joins a render in flight, or renders here.
    ImagePtr render(int index, QSize box)
    {
        const RenderKey key{index, box.width(), box.height()};
        std::promise<ImagePtr> promise;
        {
            std::unique_lock guard(cacheMutex);
            for (auto it = recent.begin(); it != recent.end(); ++it) {
                if (it->first == key) {
                    recent.splice(recent.begin(), recent, it);
                    return recent.front().second;
                }
            }
            if (auto it = inFlight.find(key); it != inFlight.end()) {
                auto future = it->second;
                guard.unlock();
                return future.get();
            }
            inFlight.emplace(key, promise.get_future().share());
        }
        // An allocation a page drives (a huge image, a deep display list)
        // gives a page that draws nothing, never an exception through Qt.
        ImagePtr image;
        try {
            image = rasterise(index, box);
        } catch (const std::exception&) {
            image = nullptr;
        }
        {
            std::lock_guard guard(cacheMutex);
            inFlight.erase(key);
            if (image)
                remember(key, image);
        }
        promise.set_value(image);
        return image;
    }

    // Keeps the image as the newest of its box size. Each size has its own
    // quota, so a run of thumbnails never pushes out the slide rendered ahead.
    // Called with `cacheMutex` held.
    void remember(const RenderKey& key, const ImagePtr& image)
    {
        recent.emplace_front(key, image);
        const auto sameBox = [&](const auto& entry) {
            return std::get<1>(entry.first) == std::get<1>(key) && std::get<2>(entry.first) == std::get<2>(key);
        };
        if (std::size_t(std::count_if(recent.begin(), recent.end(), sameBox)) > keepRecent) {
            const auto oldest = std::find_if(recent.rbegin(), recent.rend(), sameBox);
            recent.erase(std::next(oldest).base());
        }
        // Renders at many sizes (a window being resized) stay bounded too.
        if (recent.size() > keepTotal)
            recent.pop_back();
    }

    bool isCachedOrInFlight(const RenderKey& key)
    {
        std::lock_guard guard(cacheMutex);
        if (inFlight.count(key))
            return true;
        for (const auto& [k, image] : recent)
            if (k == key)
                return true;
        return false;
    }
};

class MuPdfDocument final : public PdfDocument {
public:
    explicit MuPdfDocument(std::shared_ptr<DocState> state) : state_(std::move(state)) {}

    QString path() const override { return state_->path; }
    int pageCount() const override { return int(state_->bounds.size()); }
    QSizeF pageSize(int index) const override
    {
        if (index < 0 || index >= pageCount())
            return {};
        const fz_rect& r = state_->bounds[std::size_t(index)];
        return QSizeF(r.x1 - r.x0, r.y1 - r.y0);
    }
    std::shared_ptr<const QImage> render(int index, QSize box) const override { return state_->render(index, box); }
    void prefetch(int index, QSize box) const override
    {
        if (index < 0 || index >= pageCount() || state_->isCachedOrInFlight({index, box.width(), box.height()}))
            return;
        // The worker keeps the document alive until it is done.
        std::shared_ptr<DocState> state = state_;
        aheadPool().start([state, index, box] { (void)state->render(index, box); });
    }

private:
    std::shared_ptr<DocState> state_;
};

}

MuPdfEngine::MuPdfEngine()
    : base_(std::make_shared<Base>())
{
}

MuPdfEngine::~MuPdfEngine() = default;

std::variant<PdfDocumentPtr, PdfOpenError> MuPdfEngine::open(const QString& path)
{
    // Whatever the library or an allocation it drives throws ends here as an
    // error: a file must never be able to end the program.
    try {
        return openChecked(path);
    } catch (const std::bad_alloc&) {
        return PdfOpenError{PdfOpenError::Kind::damaged, QStringLiteral("The PDF needs more memory than there is.")};
    } catch (const std::exception& e) {
        return PdfOpenError{PdfOpenError::Kind::damaged, QString::fromUtf8(e.what())};
    }
}

std::variant<PdfDocumentPtr, PdfOpenError> MuPdfEngine::openChecked(const QString& path)
{
    using Kind = PdfOpenError::Kind;
    const QFileInfo info(path);
    if (!info.exists())
        return PdfOpenError{Kind::other, QStringLiteral("The file does not exist.")};
    // A folder named x.pdf, or a pipe or device that would block the read.
    if (!info.isFile())
        return PdfOpenError{Kind::notPdf, QStringLiteral("This is not a regular file.")};
    if (info.size() == 0)
        return PdfOpenError{Kind::notPdf, QStringLiteral("The file is empty.")};
    if (!base_->context)
        return PdfOpenError{Kind::other, QStringLiteral("The PDF engine could not start.")};

    auto state = std::make_shared<DocState>();
    state->base = base_;
    state->path = path;
    LocalContext local(base_->context);
    fz_context* ctx = local.get();
    if (!ctx)
        return PdfOpenError{Kind::other, QStringLiteral("The PDF engine could not start.")};

    char reason[256] = {};
    Kind kind = Kind::damaged;
    const QByteArray native = QFile::encodeName(path);
    state->document = openPdf(ctx, native.constData(), &kind, reason, sizeof reason);
    if (!state->document) {
        if (kind == Kind::damaged && !hasPdfHeader(path))
            kind = Kind::notPdf;
        return PdfOpenError{kind, reason[0] ? QString::fromUtf8(reason) : QStringLiteral("The file is not a readable PDF.")};
    }
    const int count = pageCountOf(ctx, state->document);
    state->bounds.reserve(std::size_t(std::max(count, 0)));
    for (int i = 0; i < count; ++i) {
        fz_rect bounds;
        // A page that cannot even be measured makes the file unusable as a
        // set entry; so does one whose size is not a number.
        if (!pageBounds(ctx, state->document, i, &bounds) || !std::isfinite(bounds.x1 - bounds.x0)
            || !std::isfinite(bounds.y1 - bounds.y0))
            return PdfOpenError{Kind::damaged, QStringLiteral("The PDF is damaged.")};
        state->bounds.push_back(bounds);
    }
    if (state->bounds.empty())
        return PdfOpenError{Kind::damaged, QStringLiteral("The PDF has no pages.")};
    return PdfDocumentPtr(std::make_shared<MuPdfDocument>(std::move(state)));
}
