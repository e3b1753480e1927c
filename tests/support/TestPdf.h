#pragma once

#include <QByteArray>
#include <QColor>
#include <QImage>
#include <QSizeF>
#include <QString>

#include <memory>

namespace TestPdf {

// Page sizes in points.
inline const QSizeF widescreen{960, 540};   // 16:9
inline const QSizeF standard{800, 600};     // 4:3

// Writes a real PDF with `pages` pages of `pageSize`, the 1-based page number
// drawn large in the middle of each page (plus `label` above it), on a
// background whose hue changes per page so renders can be told apart.
bool write(const QString& path, int pages, QSizeF pageSize = widescreen, const QString& label = {});

// Broken files that must never crash the engine.
void writeEmpty(const QString& path);               // zero bytes
void writeNotPdf(const QString& path);              // plain text
bool writeTruncated(const QString& path);           // a real PDF cut in half
// A few hundred bytes whose page tree claims 2,147,483,647 pages.
void writeHugePageCount(const QString& path);
// One 200×400 pt page with a capital I 300 pt tall in Helvetica, its outline
// stroked 4 pt wide and its inside left empty, on white.
void writeOutlinedLetter(const QString& path);
// Encrypted (AES-256) with a user password: it cannot be opened without it.
bool writeEncrypted(const QString& path, const QByteArray& userPassword = "stage");
// A deck from `write` (16:9) whose first page has a crop box of the left
// half of its media box and whose second page is turned a quarter.
bool writeCropped(const QString& path, int pages);
// True when `path` is locked and `password` unlocks its two pages.
bool opensWithPassword(const QString& path, const QByteArray& password);

// The background colour `write` gives page `index` (zero-based).
unsigned pageRgb(int index);

// Which page of a PDF from `write` an image shows, told by the colour near
// its top-left corner: -1 for no image, -2 for no page's colour.
int pageShown(const std::shared_ptr<const QImage>& image);

// Red, green and blue of `pixel` each within `tolerance` of `want`'s.
inline bool near(QRgb pixel, QColor want, int tolerance = 3)
{
    return qAbs(qRed(pixel) - want.red()) <= tolerance && qAbs(qGreen(pixel) - want.green()) <= tolerance
        && qAbs(qBlue(pixel) - want.blue()) <= tolerance;
}

// A run of pixels along one row or column: where its middle is and how
// many pixels long it is.
struct Span {
    double centre = -1;
    int length = 0;
};

// The pixels from `from` to `to` (inclusive) along row `line` (column, when
// `vertical`) that pass `test`, taken as one run from the first to the last.
template <typename Test>
Span spanAlong(const QImage& image, bool vertical, int line, int from, int to, Test test)
{
    int first = -1;
    int last = -1;
    for (int i = from; i <= to; ++i) {
        const QRgb pixel = vertical ? image.pixel(line, i) : image.pixel(i, line);
        if (test(pixel)) {
            if (first < 0)
                first = i;
            last = i;
        }
    }
    if (first < 0)
        return {};
    return {(first + last + 1) / 2.0, last - first + 1};
}

}

#include <QTemporaryDir>

// A temporary folder to write test PDFs into.
class TestFolder {
public:
    QString path() const { return dir_.path(); }
    // Writes `name` with `pages` pages and returns its absolute path.
    QString pdf(const QString& name, int pages, QSizeF pageSize = TestPdf::widescreen)
    {
        const QString file = dir_.filePath(name);
        TestPdf::write(file, pages, pageSize, name);
        return file;
    }
    QString file(const QString& name) const { return dir_.filePath(name); }

private:
    QTemporaryDir dir_;
};
