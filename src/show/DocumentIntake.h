#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

class QMimeData;

// What a drag, a drop or the command line carries, turned into standardized
// absolute file paths ("." and ".." resolved) in the order given. The model
// then decides what the paths mean (AppModel::ingestDroppedURLs).
namespace DocumentIntake {

// `text` as an absolute, clean local path: as it stands when it begins with
// "/", else taken from the folder `base` (itself absolute); none for an
// empty text, one holding a NUL, or a relative text without a base.
std::optional<QString> localPath(const QString& text, const QString& base);

// One dropped text: a file URL, or an absolute path. Anything else gives none.
std::optional<QString> parse(const QString& text);

// One dropped item's raw bytes: a file URL's encoded form, or UTF-8 text that
// is a file URL or a path (a relative path is taken from the current folder).
std::optional<QString> parse(const QByteArray& data);

// The files a drag offers: the file URLs of its URL list, otherwise its text
// read by `parse`. Empty when it offers no file.
QStringList fileURLs(const QMimeData* mime);

// Command-line arguments as absolute paths: file URLs as given by file
// managers, or paths relative to `workingDirectory` (":intro.pdf" and
// "file:slides.pdf" too). Arguments that name no file are left out.
QStringList argumentPaths(const QStringList& arguments, const QString& workingDirectory);

}
