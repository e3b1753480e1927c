// The model's side of the clicker: whether presses are heard while another
// program has the focus, asking for that access, and staying responsive.
#include "model/AppModel.h"

#include "input/ClickerAccessDialog.h"
#include "input/ClickerMonitor.h"
#include "platform/Activity.h"
#include "platform/InputSource.h"

void AppModel::refreshClickerTrust()
{
    if (!clicker_) {
        clickerTrusted.set(false);
        return;
    }
    // Looking again opens a device that has just become readable.
    clicker_->refresh();
    clickerTrusted.set(clicker_->hearsOutside());
}

void AppModel::promptClickerAccess()
{
    refreshClickerTrust();
    if (!clicker_)
        return;
    auto* dialog = new ClickerAccessDialog(clicker_->visibleDevices(), clickerTrusted.peek());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    std::weak_ptr<AppModel*> weak = self_;
    // Once access is installed the remote is opened as soon as it is re-plugged;
    // checking again when the dialog closes picks up what is already readable.
    QObject::connect(dialog, &QDialog::finished, [weak] {
        if (auto model = weak.lock(); model && *model)
            (*model)->refreshClickerTrust();
    });
    dialog->open();
}

void AppModel::keepAliveForClicker()
{
    if (!presentationActivity.peek() && services_.activity)
        presentationActivity.set(services_.activity->begin(QStringLiteral("Live clicker and Syphon output")));
}
