#include "ui/console/NoteBar.h"

#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "ui/console/ConsoleStyle.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>

NoteBar::NoteBar(AppModel& model, QWidget* parent)
    : ConsolePart(model, parent)
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(12, 6, 12, 6);
    title_ = new QLabel(this);
    ConsoleStyle::enlargeFont(title_, 1.0, true);
    caption_ = new QLabel(this);
    caption_->setForegroundRole(QPalette::PlaceholderText);
    field_ = new QLineEdit(this);
    field_->setObjectName(QStringLiteral("noteField"));
    field_->setClearButtonEnabled(true);
    // Files dropped here go to the window, like anywhere else.
    field_->setAcceptDrops(false);
    ConsoleStyle::enlargeFont(field_, 1.15);
    layout->addWidget(title_);
    layout->addWidget(caption_);
    layout->addWidget(field_, 1);
    connect(field_, &QLineEdit::textEdited, this, [this](const QString& text) { model_.setCurrentNote(text); });
    startFollowing();
}

void NoteBar::refresh()
{
    title_->setText(L10n::t(QStringLiteral("note.title")));
    caption_->setText(L10n::t(QStringLiteral("note.only_console")));
    field_->setPlaceholderText(L10n::t(QStringLiteral("note.placeholder")));
    // Only a different note replaces the text: typing keeps its cursor.
    const QString note = model_.currentNote();
    if (field_->text() != note)
        field_->setText(note);
    field_->setEnabled(model_.document() != nullptr);
}
