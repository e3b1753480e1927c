#include "QtDialogs.h"

#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <cstdio>

void QtDialogs::warning(const QString& title, const QString& informativeText)
{
    QMessageBox box(QMessageBox::Warning, title, title, QMessageBox::Ok, QApplication::activeWindow());
    box.setInformativeText(informativeText);
    // Watched from outside (PDF_BRELVONIC_TRACE, see main.cpp), the alert is
    // told on stdout and dismissed as soon as its loop runs, as OK would.
    if (qEnvironmentVariableIsSet("PDF_BRELVONIC_TRACE")) {
        QString line = QStringLiteral("alert: ") + title + QStringLiteral(": ") + informativeText;
        std::fputs(qPrintable(line.replace(u'\n', QStringLiteral(" | ")) + u'\n'), stdout);
        std::fflush(stdout);
        QTimer::singleShot(0, &box, &QMessageBox::accept);
    }
    box.exec();
}

QStringList QtDialogs::openPanel(const OpenOptions& options)
{
    QFileDialog dialog(QApplication::activeWindow(), options.title);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    if (options.directories) {
        dialog.setFileMode(QFileDialog::Directory);
        dialog.setOption(QFileDialog::ShowDirsOnly, true);
    } else {
        dialog.setFileMode(options.multiple ? QFileDialog::ExistingFiles : QFileDialog::ExistingFile);
        if (!options.nameFilters.isEmpty())
            dialog.setNameFilters(options.nameFilters);
    }
    if (!options.prompt.isEmpty())
        dialog.setLabelText(QFileDialog::Accept, options.prompt);
    if (dialog.exec() != QDialog::Accepted)
        return {};
    return dialog.selectedFiles();
}

std::optional<QString> QtDialogs::savePanel(const SaveOptions& options)
{
    QFileDialog dialog(QApplication::activeWindow(), options.title, options.directory);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    if (!options.nameFilters.isEmpty())
        dialog.setNameFilters(options.nameFilters);
    if (!options.defaultSuffix.isEmpty())
        dialog.setDefaultSuffix(options.defaultSuffix);
    if (!options.suggestedName.isEmpty())
        dialog.selectFile(options.suggestedName);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return std::nullopt;
    return dialog.selectedFiles().constFirst();
}

std::optional<QString> QtDialogs::prompt(const PromptOptions& options)
{
    QDialog dialog(QApplication::activeWindow());
    dialog.setWindowTitle(options.title);
    auto* layout = new QVBoxLayout(&dialog);
    auto* heading = new QLabel(options.title, &dialog);
    QFont bold = heading->font();
    bold.setBold(true);
    heading->setFont(bold);
    layout->addWidget(heading);
    if (!options.informativeText.isEmpty())
        layout->addWidget(new QLabel(options.informativeText, &dialog));
    auto* field = new QLineEdit(options.text, &dialog);
    field->setPlaceholderText(options.placeholder);
    field->setMinimumSize(280, 24);
    layout->addWidget(field);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    if (!options.okLabel.isEmpty())
        buttons->button(QDialogButtonBox::Ok)->setText(options.okLabel);
    if (!options.cancelLabel.isEmpty())
        buttons->button(QDialogButtonBox::Cancel)->setText(options.cancelLabel);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    layout->addWidget(buttons);
    // The operator may have another program in front (a mixer): bring this one
    // forward so that typing goes into the field at once.
    dialog.show();
    dialog.raise();
    dialog.activateWindow();
    field->setFocus();
    field->selectAll();
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    return field->text();
}
