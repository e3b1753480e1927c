#include "ui/console/ConsoleTexts.h"

#include "l10n/L10n.h"
#include "model/AppModel.h"

namespace ConsoleTexts {

QString pageLabel(const AppModel& model)
{
    const auto& set = model.playlist();
    const int page = model.pageIndex() + 1;
    if (set.size() < 2)
        return L10n::t(QStringLiteral("slide.of"), page, model.pageCount());
    int total = 0;
    for (const PlaylistEntry& entry : set)
        total += entry.pageCount;
    return L10n::t(QStringLiteral("slide.of_set"), page, model.pageCount(), model.globalPageIndex() + 1, total);
}

QString syphonStatus(const AppModel& model)
{
    const PixelSize size = model.syphonPixelSize();
    const QString state = L10n::t(model.isSyphonPublishing() ? QStringLiteral("syphon.live") : QStringLiteral("syphon.wait"));
    return L10n::t(QStringLiteral("syphon.status"), size.width, size.height, state);
}

bool hasActiveStatus(const AppModel& model)
{
    return model.isBlackout() || model.isFrozen() || model.stageTool() != StageTool::pointer;
}

QString windowTitle(const AppModel& model)
{
    if (!model.document())
        return QStringLiteral("PDF Brelvonic");
    return model.showTitle() + QStringLiteral(" \u2014 ") + model.fileTitle() + QStringLiteral(" \u00B7 ") + pageLabel(model);
}

}
