// Cold renders side by side: every page of each deck fitted into 1920×1080,
// first by this program's engine (a fresh engine per deck, so nothing is
// cached), then by poppler's cairo backend on the same pages at the same
// size. Prints ms per page for both and their ratio, per deck.
//
// Usage: bench_render_compare [--only engine|poppler] deck.pdf ...
// (a generated deck when given none)
#include "platform/MuPdfEngine.h"
#include "support/TestPdf.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QGuiApplication>
#include <QUrl>

#include <poppler.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numeric>
#include <vector>

namespace {

struct Times {
    std::vector<double> ms;
    double total() const { return std::accumulate(ms.begin(), ms.end(), 0.0); }
    double median() const
    {
        if (ms.empty())
            return 0;
        std::vector<double> s = ms;
        std::sort(s.begin(), s.end());
        return s[s.size() / 2];
    }
};

double elapsedMs(const QElapsedTimer& t)
{
    return double(t.nsecsElapsed()) / 1e6;
}

Times engineTimes(const QString& path)
{
    Times times;
    MuPdfEngine engine;
    auto opened = engine.open(path);
    auto* doc = std::get_if<PdfDocumentPtr>(&opened);
    if (!doc)
        return times;
    for (int i = 0; i < (*doc)->pageCount(); ++i) {
        QElapsedTimer t;
        t.start();
        auto image = (*doc)->render(i, QSize(1920, 1080));
        times.ms.push_back(elapsedMs(t));
        if (!image)
            std::printf("  engine: page %d did not render\n", i + 1);
    }
    return times;
}

Times popplerTimes(const QString& path)
{
    Times times;
    const QByteArray uri = QUrl::fromLocalFile(path).toEncoded();
    GError* error = nullptr;
    PopplerDocument* doc = poppler_document_new_from_file(uri.constData(), nullptr, &error);
    if (!doc) {
        if (error)
            g_error_free(error);
        return times;
    }
    const int pages = poppler_document_get_n_pages(doc);
    for (int i = 0; i < pages; ++i) {
        QElapsedTimer t;
        t.start();
        PopplerPage* page = poppler_document_get_page(doc, i);
        double pw = 0, ph = 0;
        poppler_page_get_size(page, &pw, &ph);
        const double scale = std::min(1920 / pw, 1080 / ph);
        const int w = std::max(1, int(std::lround(pw * scale)));
        const int h = std::max(1, int(std::lround(ph * scale)));
        cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, w, h);
        cairo_t* cr = cairo_create(surface);
        cairo_set_source_rgb(cr, 1, 1, 1);
        cairo_paint(cr);
        cairo_scale(cr, w / pw, h / ph);
        poppler_page_render(page, cr);
        cairo_destroy(cr);
        cairo_surface_flush(surface);
        times.ms.push_back(elapsedMs(t));
        cairo_surface_destroy(surface);
        g_object_unref(page);
    }
    g_object_unref(doc);
    return times;
}

}

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    QStringList decks;
    QString only;  // "engine" or "poppler": one side alone, for a profiler
    const QStringList args = app.arguments().mid(1);
    for (int i = 0; i < args.size(); ++i) {
        if (args[i] == QLatin1String("--only") && i + 1 < args.size())
            only = args[++i];
        else
            decks << QFileInfo(args[i]).absoluteFilePath();
    }
    TestFolder generated;
    if (decks.isEmpty())
        decks << generated.pdf(QStringLiteral("generated.pdf"), 30);

    std::printf("%-28s %6s %12s %12s %12s %12s %7s\n", "deck (1920x1080, cold)", "pages", "engine mean", "poppler mean",
                "engine med", "poppler med", "ratio");
    for (const QString& deck : decks) {
        const Times engine = only == QLatin1String("poppler") ? Times{{1}} : engineTimes(deck);
        const Times poppler = only == QLatin1String("engine") ? Times{{1}} : popplerTimes(deck);
        if (engine.ms.empty() || poppler.ms.empty()) {
            std::printf("%-28s cannot open\n", qPrintable(QFileInfo(deck).fileName()));
            continue;
        }
        const double n = double(engine.ms.size());
        std::printf("%-28s %6zu %9.1f ms %9.1f ms %9.1f ms %9.1f ms %7.2f\n", qPrintable(QFileInfo(deck).fileName()),
                    engine.ms.size(), engine.total() / n, poppler.total() / double(poppler.ms.size()), engine.median(),
                    poppler.median(), engine.total() / poppler.total());
        std::fflush(stdout);
    }
    return 0;
}
