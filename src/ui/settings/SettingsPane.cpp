#include "ui/settings/SettingsPane.h"

#include "l10n/L10n.h"
#include "model/AppModel.h"

#include <QAbstractButton>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPalette>
#include <QVBoxLayout>

SettingsPane::SettingsPane(AppModel& model, QWidget* parent)
    : QWidget(parent)
    , model_(model)
    , column_(new QVBoxLayout(this))
{
    column_->setContentsMargins(14, 12, 14, 12);
    column_->setSpacing(10);
    // The sections stay together at the top; spare room gathers below them.
    column_->addStretch(1);
}

void SettingsPane::place(QWidget* widget)
{
    column_->insertWidget(column_->count() - 1, widget);
}

QFormLayout* SettingsPane::addSection(const QString& titleKey, const QString& literalTitle)
{
    auto* box = new QGroupBox(literalTitle, this);
    if (!titleKey.isEmpty()) {
        relabels_.push_back([box, titleKey] { box->setTitle(L10n::t(titleKey)); });
    }
    auto* form = new QFormLayout(box);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    form->setRowWrapPolicy(QFormLayout::DontWrapRows);
    form->setLabelAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    form->setVerticalSpacing(7);
    place(box);
    return form;
}

QLabel* SettingsPane::addRow(QFormLayout* form, const QString& key, QWidget* field)
{
    auto* label = new QLabel(form->parentWidget());
    keepText(label, key);
    form->addRow(label, field);
    return label;
}

QLabel* SettingsPane::addHelp(QFormLayout* form, const QString& key)
{
    auto* help = new QLabel(form->parentWidget());
    help->setWordWrap(true);
    makeSecondary(help);
    QFont font = help->font();
    font.setPointSizeF(font.pointSizeF() * 0.92);
    help->setFont(font);
    if (!key.isEmpty())
        keepText(help, key);
    form->addRow(help);
    return help;
}

void SettingsPane::makeSecondary(QLabel* label)
{
    QPalette palette = label->palette();
    const QColor text = palette.color(QPalette::WindowText);
    const QColor ground = palette.color(QPalette::Window);
    const auto mix = [](int a, int b) { return (a * 3 + b * 2) / 5; };
    palette.setColor(QPalette::WindowText,
                     QColor(mix(text.red(), ground.red()), mix(text.green(), ground.green()), mix(text.blue(), ground.blue())));
    label->setPalette(palette);
}

void SettingsPane::keepText(QLabel* label, const QString& key)
{
    relabels_.push_back([label, key] { label->setText(L10n::t(key)); });
}

void SettingsPane::keepText(QAbstractButton* button, const QString& key)
{
    relabels_.push_back([button, key] { button->setText(L10n::t(key)); });
}

void SettingsPane::follow()
{
    follower_ = new obs::Follower([this] {
        // Reading the language makes a switch of it relabel the pane at once.
        (void)model_.interfaceLanguage();
        for (const auto& relabel : relabels_)
            relabel();
        update();
    }, this);
    follower_->start();
}
