#include "ui/settings/InterfaceSettingsPane.h"

#include "model/AppModel.h"

#include <QComboBox>
#include <QFormLayout>

InterfaceSettingsPane::InterfaceSettingsPane(AppModel& model, QWidget* parent)
    : SettingsPane(model, parent)
{
    QFormLayout* form = addSection({});
    // Each language in its own name, whatever the interface speaks now.
    language_ = addPicker<AppLanguage>(form, QStringLiteral("lang.label"), QStringLiteral("languagePicker"),
                                       appLanguages.all(), &AppLanguages::displayName,
                                       [this](AppLanguage language) { model_.setInterfaceLanguage(language); });
    addHelp(form, QStringLiteral("lang.hint"));
    follow();
}

void InterfaceSettingsPane::update()
{
    showChoice(language_, model_.interfaceLanguage());
}
