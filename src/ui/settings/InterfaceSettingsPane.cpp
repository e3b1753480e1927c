#include "ui/settings/InterfaceSettingsPane.h"

#include "model/AppModel.h"

#include <QComboBox>
#include <QFormLayout>

InterfaceSettingsPane::InterfaceSettingsPane(AppModel& model, QWidget* parent)
    : SettingsPane(model, parent)
{
    QFormLayout* form = addSection({});
    language_ = new QComboBox(this);
    language_->setObjectName(QStringLiteral("languagePicker"));
    for (AppLanguage language : appLanguages.all())
        language_->addItem(AppLanguages::displayName(language), static_cast<int>(language));
    addRow(form, QStringLiteral("lang.label"), language_);
    addHelp(form, QStringLiteral("lang.hint"));
    connect(language_, &QComboBox::activated, this, [this](int index) {
        model_.setInterfaceLanguage(static_cast<AppLanguage>(language_->itemData(index).toInt()));
    });
    follow();
}

void InterfaceSettingsPane::update()
{
    language_->setCurrentIndex(language_->findData(static_cast<int>(model_.interfaceLanguage())));
}
