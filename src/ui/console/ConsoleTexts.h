#pragma once

#include <QString>

class AppModel;

// Texts and states several console parts show, derived from the model on
// every call (so a view that reads them follows what they rest on).
namespace ConsoleTexts {

// "Slide 3 of 12", or with two or more entries "Slide 3 of 12 · set 13/22".
QString pageLabel(const AppModel& model);
// The source's size and whether it is live.
QString syphonStatus(const AppModel& model);
// Blackout, freeze or a tool other than the pointer: the stage shows chips.
bool hasActiveStatus(const AppModel& model);
// The window title: show, file and page while a document is open.
QString windowTitle(const AppModel& model);

}
