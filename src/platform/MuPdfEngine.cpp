#include "MuPdfEngine.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QMetaObject>
#include <malloc.h>

#include <algorithm>
#include <cmath>
#include <array>
#include <chrono>
#include <cstdlib>
#include <atomic>
#include <condition_variable>
#include <future>
#include <list>
#include <mutex>
#include <thread>
#include <vector>

extern "C" {
#include <mupdf/fitz.h>
#include <mupdf/pdf.h>
}

namespace {
struct DocState;

// A rendered picture in the engine's cache.
struct PictureKey {
    std::uint64_t document;
    int index;
    int width;
    int height;
    bool operator==(const PictureKey&) const = default;
    // Thumbnails and slides are budgeted apart, so a pass over a long file's
    // thumbnails never pushes out the slides rendered ahead.
    bool small() const { return width <= 320 && height <= 320; }
};

using ImagePtr = std::shared_ptr<const QImage>;

std::size_t bytesOf(const ImagePtr& image)
{
    return image ? std::size_t(image->sizeInBytes()) : 0;
}
}

// Pages are drawn into pictures of megabytes, and the library's own
// temporaries (transparency groups, soft masks, decoded images) are as large.
// By default the C library raises its threshold for giving such blocks pages
// of their own each time one is freed, after which they are carved from the
// workers' heaps, which fragment and never shrink: memory grew with every
// file of a long set. A fixed threshold hands each of them back to the system
// when it goes; the price is fresh pages for every large block, a few
// milliseconds on a page full of soft masks.
static void keepLargeBlocksApart()
{
    static std::once_flag once;
    std::call_once(once, [] { mallopt(M_MMAP_THRESHOLD, 1 << 20); });
}

// One base context with real locks, each worker cloning it; and what the
// engine holds across its documents: the picture cache and the counters.
struct MuPdfEngine::Base {
    std::array<std::mutex, FZ_LOCK_MAX> locks;
    fz_locks_context lockContext{};
    fz_context* context = nullptr;

    // Guards `pictures` and the byte counts. Held only for
    // bookkeeping, never while the library works.
    mutable std::mutex mutex;
    std::list<std::pair<PictureKey, ImagePtr>> pictures;  // most recent first
    std::size_t slideBytes = 0;
    std::size_t thumbnailBytes = 0;
    std::atomic<int> lists{0};
    std::atomic<int> parsed{0};

    Base()
    {
        keepLargeBlocksApart();
        lockContext.user = this;
        lockContext.lock = [](void* user, int lock) { static_cast<Base*>(user)->locks[std::size_t(lock)].lock(); };
        lockContext.unlock = [](void* user, int lock) { static_cast<Base*>(user)->locks[std::size_t(lock)].unlock(); };
        context = fz_new_context(nullptr, &lockContext, storeBudget);
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

    ImagePtr cachedPicture(const PictureKey& key)
    {
        std::lock_guard guard(mutex);
        for (auto it = pictures.begin(); it != pictures.end(); ++it) {
            if (it->first == key) {
                pictures.splice(pictures.begin(), pictures, it);
                return it->second;
            }
        }
        return nullptr;
    }

    void remember(const PictureKey& key, const ImagePtr& image)
    {
        std::vector<ImagePtr> dropped;  // freed outside the lock
        std::lock_guard guard(mutex);
        for (const auto& [k, i] : pictures)
            if (k == key)
                return;
        pictures.emplace_front(key, image);
        (key.small() ? thumbnailBytes : slideBytes) += bytesOf(image);
        // The oldest of the same kind go first, never the one just added.
        const bool small = key.small();
        const std::size_t budget = small ? thumbnailBudget : slideBudget;
        std::size_t& used = small ? thumbnailBytes : slideBytes;
        auto it = pictures.end();
        while (used > budget && --it != pictures.begin()) {
            if (it->first.small() != small)
                continue;
            used -= bytesOf(it->second);
            dropped.push_back(std::move(it->second));
            it = pictures.erase(it);
        }
    }

    void forget(std::uint64_t document)
    {
        std::vector<ImagePtr> dropped;
        std::lock_guard guard(mutex);
        for (auto it = pictures.begin(); it != pictures.end();) {
            if (it->first.document != document) {
                ++it;
                continue;
            }
            (it->first.small() ? thumbnailBytes : slideBytes) -= bytesOf(it->second);
            dropped.push_back(std::move(it->second));
            it = pictures.erase(it);
        }
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

fz_rect mediaBounds(fz_context* ctx, fz_page* page);

// The MuPDF calls that can fail, kept apart from C++ objects: fz_try
// unwinds with longjmp, which must not cross a C++ destructor.

// Also gives the page's media box, measured while the page is loaded anyway.
// A list is always built whole, even for a render nobody wants any more: it
// is kept and serves the next time the page is asked for. Only drawing is
// cut short.
fz_display_list* loadList(fz_context* ctx, fz_document* doc, int index, fz_rect* media)
{
    fz_display_list* list = nullptr;
    fz_page* page = nullptr;
    fz_device* dev = nullptr;
    fz_var(list);
    fz_var(page);
    fz_var(dev);
    fz_try(ctx)
    {
        page = fz_load_page(ctx, doc, index);
        *media = mediaBounds(ctx, page);
        list = fz_new_display_list(ctx, fz_bound_page(ctx, page));
        dev = fz_new_list_device(ctx, list);
        fz_run_page(ctx, page, dev, fz_identity, nullptr);
        fz_close_device(ctx, dev);
    }
    fz_always(ctx)
    {
        fz_drop_device(ctx, dev);
        fz_drop_page(ctx, page);
    }
    fz_catch(ctx)
    {
        fz_drop_display_list(ctx, list);
        list = nullptr;
    }
    return list;
}

// The library strokes outlined text glyph by glyph through FreeType's
// stroker and keeps none of the results, which made pages with outlined
// lettering (common in MetaPost and TeX output) several times slower than
// their fill. The same outlines stroked as paths go through the library's
// own rasteriser, which draws the same shapes much faster. Fonts without
// outlines (Type 3) keep the library's way.
using StrokeText = void (*)(fz_context*, fz_device*, const fz_text*, const fz_stroke_state*, fz_matrix,
                            fz_colorspace*, const float*, float, fz_color_params);
std::atomic<StrokeText> libraryStrokeText{nullptr};

void strokeGlyph(fz_context* ctx, fz_device* dev, fz_font* font, int gid, fz_matrix trm, const fz_stroke_state* stroke,
                 fz_matrix ctm, fz_colorspace* colorspace, const float* color, float alpha, fz_color_params params)
{
    fz_path* path = fz_outline_glyph(ctx, font, gid, trm);
    if (!path)
        return;
    fz_try(ctx) dev->stroke_path(ctx, dev, path, stroke, ctm, colorspace, color, alpha, params);
    fz_always(ctx) fz_drop_path(ctx, path);
    fz_catch(ctx) fz_rethrow(ctx);
}

void strokeTextAsPaths(fz_context* ctx, fz_device* dev, const fz_text* text, const fz_stroke_state* stroke,
                       fz_matrix ctm, fz_colorspace* colorspace, const float* color, float alpha,
                       fz_color_params params)
{
    for (const fz_text_span* span = text->head; span; span = span->next) {
        if (!fz_font_ft_face(ctx, span->font)) {
            libraryStrokeText.load()(ctx, dev, text, stroke, ctm, colorspace, color, alpha, params);
            return;
        }
    }
    for (const fz_text_span* span = text->head; span; span = span->next) {
        for (int i = 0; i < span->len; ++i) {
            const fz_text_item& item = span->items[i];
            if (item.gid < 0)
                continue;
            fz_matrix trm = span->trm;
            trm.e = item.x;
            trm.f = item.y;
            strokeGlyph(ctx, dev, span->font, item.gid, trm, stroke, ctm, colorspace, color, alpha, params);
        }
    }
}

// Draws straight into `bits`: B, G, R, A bytes, which is what
// QImage::Format_ARGB32_Premultiplied holds on this platform, so the picture
// needs no conversion afterwards.
bool drawList(fz_context* ctx, fz_display_list* list, fz_matrix ctm, int w, int h, int stride, unsigned char* bits,
              fz_cookie* cookie)
{
    fz_pixmap* pix = nullptr;
    fz_device* dev = nullptr;
    bool ok = false;
    fz_var(pix);
    fz_var(dev);
    fz_var(ok);
    fz_try(ctx)
    {
        pix = fz_new_pixmap_with_data(ctx, fz_device_bgr(ctx), w, h, nullptr, 1, stride, bits);
        fz_clear_pixmap_with_value(ctx, pix, 0xFF);
        dev = fz_new_draw_device(ctx, fz_identity, pix);
        libraryStrokeText = dev->stroke_text;
        dev->stroke_text = strokeTextAsPaths;
        fz_run_display_list(ctx, list, dev, ctm, fz_infinite_rect, cookie);
        fz_close_device(ctx, dev);
        ok = !cookie->abort;
    }
    fz_always(ctx)
    {
        fz_drop_device(ctx, dev);
        fz_drop_pixmap(ctx, pix);
    }
    fz_catch(ctx) ok = false;
    return ok;
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

std::atomic<std::uint64_t> nextDocumentId{1};

struct DocState {
    std::shared_ptr<MuPdfEngine::Base> base;
    std::uint64_t id = nextDocumentId++;
    QString path;
    QByteArray nativePath;
    int pageCount = 0;
    // Each page is measured when it is first loaded, on a worker, and kept
    // for the life of the document; opening a file never walks all its pages.
    // Guarded by `documentMutex`.
    std::vector<fz_rect> bounds;
    std::vector<bool> measured;
    std::atomic<bool> near{true};
    std::atomic<std::uint64_t> lastUse{0};

    // Guards the parsed file and its lists: pages are loaded and listed one
    // at a time.
    std::mutex documentMutex;
    fz_document* document = nullptr;
    std::list<std::pair<int, fz_display_list*>> lists;  // most recent first

    ~DocState()
    {
        base->forget(id);
        LocalContext local(base->context);
        if (fz_context* ctx = local.get())
            dropParsed(ctx);
    }

    // Called with `documentMutex` held (or from the destructor).
    void dropParsed(fz_context* ctx)
    {
        for (auto& [index, list] : lists)
            fz_drop_display_list(ctx, list);
        base->lists -= int(lists.size());
        lists.clear();
        if (document) {
            fz_drop_document(ctx, document);
            document = nullptr;
            --base->parsed;
        }
    }

    // The page's display list, parsing the file again if it was let go; the
    // caller owns one reference.
    fz_display_list* displayList(fz_context* ctx, int index)
    {
        std::lock_guard guard(documentMutex);
        for (auto it = lists.begin(); it != lists.end(); ++it) {
            if (it->first == index) {
                lists.splice(lists.begin(), lists, it);
                return fz_keep_display_list(ctx, it->second);
            }
        }
        if (!parse(ctx))
            return nullptr;
        fz_rect pageRect;
        fz_display_list* list = loadList(ctx, document, index, &pageRect);
        if (!list)
            return nullptr;
        remember(index, pageRect);
        lists.emplace_front(index, list);
        ++base->lists;
        if (int(lists.size()) > MuPdfEngine::listsPerDocument) {
            fz_drop_display_list(ctx, lists.back().second);
            lists.pop_back();
            --base->lists;
        }
        return fz_keep_display_list(ctx, list);
    }

    // Called with `documentMutex` held.
    void remember(int index, const fz_rect& r)
    {
        if (measured[std::size_t(index)])
            return;
        bounds[std::size_t(index)] = r;
        measured[std::size_t(index)] = true;
    }

    // The page's media box, measured now if no worker has yet. An
    // unmeasurable page has an empty box and draws nothing.
    fz_rect pageRect(int index)
    {
        std::lock_guard guard(documentMutex);
        if (measured[std::size_t(index)])
            return bounds[std::size_t(index)];
        LocalContext local(base->context);
        fz_context* ctx = local.get();
        if (!ctx || !parse(ctx))
            return fz_empty_rect;
        fz_rect r;
        if (!pageBounds(ctx, document, index, &r))
            r = fz_empty_rect;
        remember(index, r);
        return r;
    }

    // Called with `documentMutex` held: the file parsed again if it was let go.
    bool parse(fz_context* ctx)
    {
        if (document)
            return true;
        char reason[256] = {};
        PdfOpenError::Kind kind = PdfOpenError::Kind::damaged;
        document = openPdf(ctx, nativePath.constData(), &kind, reason, sizeof reason);
        if (!document)
            return false;
        ++base->parsed;
        return true;
    }

    // Lets go of the parsed file and its lists unless a worker is using them
    // (then a later trim does it). True when nothing parsed is left.
    bool tryRelease(fz_context* ctx)
    {
        std::unique_lock guard(documentMutex, std::try_to_lock);
        if (!guard.owns_lock())
            return false;
        dropParsed(ctx);
        return true;
    }

    bool isParsed()
    {
        std::unique_lock guard(documentMutex, std::try_to_lock);
        return !guard.owns_lock() || document != nullptr;
    }

    ImagePtr rasterise(int index, QSize box, fz_cookie* cookie)
    {
        if (index < 0 || index >= pageCount || box.width() < 1 || box.height() < 1)
            return nullptr;
        LocalContext local(base->context);
        fz_context* ctx = local.get();
        if (!ctx)
            return nullptr;
        fz_display_list* list = displayList(ctx, index);
        if (!list)
            return nullptr;
        const fz_rect r = pageRect(index);
        const double pw = r.x1 - r.x0;
        const double ph = r.y1 - r.y0;
        if (!(pw > 0 && ph > 0) || !std::isfinite(pw) || !std::isfinite(ph)) {
            fz_drop_display_list(ctx, list);
            return nullptr;
        }
        const double scale = std::min(box.width() / pw, box.height() / ph);
        const int w = std::max(1, int(std::lround(pw * scale)));
        const int h = std::max(1, int(std::lround(ph * scale)));
        // Scale each axis to the whole pixels so the page fills the image exactly.
        const fz_matrix ctm = fz_concat(fz_translate(-r.x0, -r.y0), fz_scale(float(w / pw), float(h / ph)));

        auto image = std::make_shared<QImage>(w, h, QImage::Format_ARGB32_Premultiplied);
        const bool ok = !image->isNull()
            && drawList(ctx, list, ctm, w, h, int(image->bytesPerLine()), image->bits(), cookie);
        fz_drop_display_list(ctx, list);
        if (!ok)
            return nullptr;
        return image;
    }
};

// One render asked for, shared by everyone who asks for the same picture.
struct Waiter;
struct Job {
    std::shared_ptr<DocState> doc;
    PictureKey key;
    RenderUrgency urgency;
    std::uint64_t order;
    std::vector<std::shared_ptr<Waiter>> waiters;
    fz_cookie cookie{};
    bool running = false;
};

struct Waiter final : RenderTicket {
    RenderDone done;
    bool onMainThread = true;
    bool cancelled = false;  // main thread only
    std::weak_ptr<Job> job;
    void cancel() override;
};

void deliver(const std::shared_ptr<Waiter>& waiter, const ImagePtr& image)
{
    if (!waiter->onMainThread) {
        waiter->done(image);
        return;
    }
    if (!waiter->done)
        return;
    QCoreApplication* app = QCoreApplication::instance();
    if (!app)
        return;
    QMetaObject::invokeMethod(
        app,
        [waiter, image] {
            if (!waiter->cancelled)
                waiter->done(image);
        },
        Qt::QueuedConnection);
}

// The workers, shared by every engine of the process and never stopped:
// lane 0 takes only renders the operator waits for, lane 1 takes those
// first, then the rest by urgency and age.
class Workers {
public:
    static Workers& instance()
    {
        static Workers* workers = new Workers;
        return *workers;
    }

    RenderTicketPtr request(const std::shared_ptr<DocState>& doc, int index, QSize box, RenderUrgency urgency,
                            RenderDone done, bool onMainThread)
    {
        auto waiter = std::make_shared<Waiter>();
        waiter->done = std::move(done);
        waiter->onMainThread = onMainThread;
        const PictureKey key{doc->id, index, box.width(), box.height()};
        doc->lastUse = ++clock_;
        std::unique_lock guard(mutex_);
        if (ImagePtr image = doc->base->cachedPicture(key)) {
            guard.unlock();
            deliver(waiter, image);
            return waiter;
        }
        std::shared_ptr<Job> job = find(key);
        if (!job) {
            job = std::make_shared<Job>();
            job->doc = doc;
            job->key = key;
            job->urgency = urgency;
            job->order = ++clock_;
            queued_.push_back(job);
        } else if (urgency < job->urgency) {
            job->urgency = urgency;
        }
        waiter->job = job;
        job->waiters.push_back(waiter);
        guard.unlock();
        wake_.notify_all();
        return waiter;
    }

    void cancel(Waiter& waiter)
    {
        waiter.cancelled = true;
        std::shared_ptr<Job> dropped;  // released outside the lock
        std::lock_guard guard(mutex_);
        std::shared_ptr<Job> job = waiter.job.lock();
        if (!job)
            return;
        std::erase_if(job->waiters, [&](const auto& w) { return w.get() == &waiter; });
        if (!job->waiters.empty())
            return;
        if (!job->running) {
            dropped = job;
            std::erase(queued_, job);
        } else if (job->urgency != RenderUrgency::shown) {
            // Nobody wants it any more: stop the library mid-page.
            job->cookie.abort = 1;
        }
    }

    void waitUntilIdle()
    {
        std::unique_lock guard(mutex_);
        idle_.wait(guard, [&] { return stopping_ || (busy_ == 0 && queued_.empty() && !trimWanted_); });
    }

    // Wakes a worker to let go of files that are no longer near.
    void trimSoon()
    {
        {
            std::lock_guard guard(mutex_);
            trimWanted_ = true;
        }
        wake_.notify_all();
    }

    // At exit: nothing new starts, what runs is cut short and awaited, so no
    // worker is still drawing while the process takes its libraries down.
    void shutdown()
    {
        std::vector<std::shared_ptr<Job>> dropped;
        std::unique_lock guard(mutex_);
        stopping_ = true;
        dropped.swap(queued_);
        for (const auto& job : running_)
            job->cookie.abort = 1;
        wake_.notify_all();
        idle_.wait_for(guard, std::chrono::seconds(2), [&] { return busy_ == 0; });
    }

private:
    Workers()
    {
        for (int lane = 0; lane < 2; ++lane)
            std::thread([this, lane] { run(lane); }).detach();
        std::atexit([] { instance().shutdown(); });
    }

    // A job for `key` that can still deliver; called with the lock held.
    std::shared_ptr<Job> find(const PictureKey& key)
    {
        for (const auto& job : queued_)
            if (job->key == key)
                return job;
        for (const auto& job : running_)
            if (job->key == key && !job->cookie.abort)
                return job;
        return nullptr;
    }

    std::vector<std::shared_ptr<Job>>::iterator pick(int lane)
    {
        auto best = queued_.end();
        for (auto it = queued_.begin(); it != queued_.end(); ++it) {
            if (lane == 0 && (*it)->urgency != RenderUrgency::shown)
                continue;
            if (best == queued_.end() || (*it)->urgency < (*best)->urgency
                || ((*it)->urgency == (*best)->urgency && (*it)->order < (*best)->order))
                best = it;
        }
        return best;
    }

    void run(int lane)
    {
        while (work(lane)) {
        }
    }

    // One job or one trim; false once the engine stops. Everything the work
    // held (the job, its file, the picture) is let go before the worker
    // counts as idle again, so at exit nothing is left half torn down.
    bool work(int lane)
    {
        {
            std::shared_ptr<Job> job;
            bool trim = false;
            {
                std::unique_lock guard(mutex_);
                wake_.wait(guard, [&] {
                    return stopping_ || pick(lane) != queued_.end() || (lane == 1 && trimWanted_);
                });
                if (stopping_)
                    return false;
                ++busy_;
                if (lane == 1 && trimWanted_) {
                    trimWanted_ = false;
                    trim = true;
                } else {
                    auto it = pick(lane);
                    job = *it;
                    queued_.erase(it);
                    job->running = true;
                    running_.push_back(job);
                }
            }
            if (trim) {
                trimDocuments();
            } else {
                ImagePtr image =
                    job->doc->rasterise(job->key.index, QSize(job->key.width, job->key.height), &job->cookie);
                std::vector<std::shared_ptr<Waiter>> waiters;
                {
                    std::lock_guard guard(mutex_);
                    // Cached before the job leaves the running list, so a
                    // request in between finds one or the other.
                    if (image)
                        job->doc->base->remember(job->key, image);
                    std::erase(running_, job);
                    waiters = std::move(job->waiters);
                    job->waiters.clear();
                }
                if (!job->cookie.abort)
                    for (const auto& waiter : waiters)
                        deliver(waiter, image);
                const bool far = !job->doc->near;
                job.reset();
                if (far)
                    trimDocuments();
            }
        }
        std::lock_guard guard(mutex_);
        if (--busy_ == 0)
            idle_.notify_all();
        return true;
    }

    // Parsed files beyond those near the operator and a few spare ones are
    // let go, the least recently used first.
    void trimDocuments()
    {
        std::vector<std::shared_ptr<DocState>> docs = allDocuments();
        std::vector<std::shared_ptr<DocState>> far;
        for (const auto& doc : docs)
            if (!doc->near && doc->isParsed())
                far.push_back(doc);
        std::sort(far.begin(), far.end(), [](const auto& a, const auto& b) { return a->lastUse > b->lastUse; });
        for (std::size_t i = MuPdfEngine::spareDocuments; i < far.size(); ++i) {
            LocalContext local(far[i]->base->context);
            if (fz_context* ctx = local.get())
                far[i]->tryRelease(ctx);
        }
    }

    std::vector<std::shared_ptr<DocState>> allDocuments();

    std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable idle_;
    bool stopping_ = false;
    std::vector<std::shared_ptr<Job>> queued_;
    std::vector<std::shared_ptr<Job>> running_;
    bool trimWanted_ = false;
    int busy_ = 0;  // workers between taking work and letting go of it
    std::atomic<std::uint64_t> clock_{0};

public:
    // Every live document of every engine, for trimming.
    std::mutex registryMutex;
    std::vector<std::weak_ptr<DocState>> registry;
};

std::vector<std::shared_ptr<DocState>> Workers::allDocuments()
{
    std::vector<std::shared_ptr<DocState>> docs;
    std::lock_guard guard(registryMutex);
    std::erase_if(registry, [&](const std::weak_ptr<DocState>& weak) {
        auto doc = weak.lock();
        if (!doc)
            return true;
        docs.push_back(std::move(doc));
        return false;
    });
    return docs;
}

void Waiter::cancel()
{
    Workers::instance().cancel(*this);
}

class MuPdfDocument final : public PdfDocument {
public:
    explicit MuPdfDocument(std::shared_ptr<DocState> state) : state_(std::move(state)) {}

    QString path() const override { return state_->path; }
    int pageCount() const override { return state_->pageCount; }
    QSizeF pageSize(int index) const override
    {
        if (index < 0 || index >= pageCount())
            return {};
        const fz_rect r = state_->pageRect(index);
        if (fz_is_empty_rect(r))
            return {};
        return QSizeF(r.x1 - r.x0, r.y1 - r.y0);
    }
    std::shared_ptr<const QImage> render(int index, QSize box) const override
    {
        if (!valid(index, box))
            return nullptr;
        auto promise = std::make_shared<std::promise<ImagePtr>>();
        auto future = promise->get_future();
        Workers::instance().request(
            state_, index, box, RenderUrgency::shown, [promise](ImagePtr image) { promise->set_value(image); },
            false);
        return future.get();
    }
    std::shared_ptr<const QImage> cached(int index, QSize box) const override
    {
        if (!valid(index, box))
            return nullptr;
        return state_->base->cachedPicture({state_->id, index, box.width(), box.height()});
    }
    RenderTicketPtr request(int index, QSize box, RenderUrgency urgency, RenderDone done) const override
    {
        if (!valid(index, box)) {
            // Nothing to draw: the answer still comes later, like any other.
            auto waiter = std::make_shared<Waiter>();
            waiter->done = std::move(done);
            deliver(waiter, nullptr);
            return waiter;
        }
        return Workers::instance().request(state_, index, box, urgency, std::move(done), true);
    }
    void setNear(bool near) const override
    {
        if (state_->near.exchange(near) == near)
            return;
        if (!near) {
            state_->base->forget(state_->id);
            Workers::instance().trimSoon();
        }
    }

private:
    bool valid(int index, QSize box) const
    {
        return index >= 0 && index < pageCount() && box.width() >= 1 && box.height() >= 1;
    }

    std::shared_ptr<DocState> state_;
};

}

MuPdfEngine::MuPdfEngine()
    : base_(std::make_shared<Base>())
{
}

MuPdfEngine::~MuPdfEngine() = default;

MuPdfEngine::Usage MuPdfEngine::usage() const
{
    Usage u;
    {
        std::lock_guard guard(base_->mutex);
        u.pictures = int(base_->pictures.size());
        u.slideBytes = base_->slideBytes;
        u.thumbnailBytes = base_->thumbnailBytes;
    }
    u.lists = base_->lists;
    u.parsedDocuments = base_->parsed;
    auto& workers = Workers::instance();
    std::lock_guard guard(workers.registryMutex);
    for (const auto& weak : workers.registry)
        if (auto doc = weak.lock(); doc && doc->base == base_ && doc->near)
            ++u.nearDocuments;
    return u;
}

void MuPdfEngine::waitUntilIdle() const
{
    Workers::instance().waitUntilIdle();
}

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
    state->nativePath = QFile::encodeName(path);
    LocalContext local(base_->context);
    fz_context* ctx = local.get();
    if (!ctx)
        return PdfOpenError{Kind::other, QStringLiteral("The PDF engine could not start.")};

    char reason[256] = {};
    Kind kind = Kind::damaged;
    state->document = openPdf(ctx, state->nativePath.constData(), &kind, reason, sizeof reason);
    if (!state->document) {
        if (kind == Kind::damaged && !hasPdfHeader(path))
            kind = Kind::notPdf;
        return PdfOpenError{kind, reason[0] ? QString::fromUtf8(reason) : QStringLiteral("The file is not a readable PDF.")};
    }
    ++base_->parsed;
    // The count was checked against what the file holds, so these are sized
    // from the truth. Only the first page is measured here: a file whose
    // opening slide cannot even be loaded is no use as a set entry, and
    // measuring every page would keep the console waiting on a long file.
    state->pageCount = pageCountOf(ctx, state->document);
    if (state->pageCount <= 0)
        return PdfOpenError{Kind::damaged, QStringLiteral("The PDF has no pages.")};
    state->bounds.assign(std::size_t(state->pageCount), fz_empty_rect);
    state->measured.assign(std::size_t(state->pageCount), false);
    fz_rect first;
    if (!pageBounds(ctx, state->document, 0, &first) || !std::isfinite(first.x1 - first.x0)
        || !std::isfinite(first.y1 - first.y0))
        return PdfOpenError{Kind::damaged, QStringLiteral("The PDF is damaged.")};
    state->remember(0, first);
    {
        auto& workers = Workers::instance();
        std::lock_guard guard(workers.registryMutex);
        // Files closed since leave no trace, however many come and go.
        std::erase_if(workers.registry, [](const std::weak_ptr<DocState>& weak) { return weak.expired(); });
        workers.registry.push_back(state);
    }
    return PdfDocumentPtr(std::make_shared<MuPdfDocument>(std::move(state)));
}
