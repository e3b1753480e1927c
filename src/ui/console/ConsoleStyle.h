#pragma once

#include <QColor>
#include <QIcon>
#include <QString>

class QApplication;
class QWidget;

// The console's look: the four interface colours, the system tints it uses
// beside them, icons and the dark theme for a dark room.
namespace ConsoleStyle {

// Accent: "Next" header, selected tool, current thumbnail.
QColor mark();
// "Set" header.
QColor sky();
// "Output" header.
QColor teal();
// "Tools" header.
QColor indigo();
QColor orange();
QColor green();
QColor red();
QColor blue();

// The icon of freedesktop name `name` from the desktop's theme, else the
// program's own drawing of it, so the console looks whole without a theme.
QIcon icon(const QString& name);

// Fusion with a dark palette: readable from a step away in a dark room.
void applyDarkTheme(QApplication& app);

// A font `points` larger than the widget's own, optionally bold.
void enlargeFont(QWidget* widget, double factor, bool bold = false);

}
