#pragma once

#include <QString>
#include <QStringList>

#include <optional>

// Modal dialogs and file panels. Each call blocks until the operator answers
// and acts only on OK: a cancelled panel gives an empty result.
class Dialogs {
public:
    virtual ~Dialogs() = default;

    // A warning alert with one OK button.
    virtual void warning(const QString& title, const QString& informativeText) = 0;

    struct OpenOptions {
        QString title;
        QString prompt;                // label of the OK button, empty for the default
        QStringList nameFilters;       // e.g. "PDF (*.pdf)"
        bool multiple = false;
        bool directories = false;      // choose folders instead of files
    };
    // Absolute paths of what was chosen, empty when cancelled.
    virtual QStringList openPanel(const OpenOptions& options) = 0;

    struct SaveOptions {
        QString title;
        QString suggestedName;
        QString directory;
        QStringList nameFilters;
        QString defaultSuffix;
    };
    virtual std::optional<QString> savePanel(const SaveOptions& options) = 0;

    struct PromptOptions {
        QString title;
        QString informativeText;
        QString placeholder;
        QString text;
        QString okLabel;
        QString cancelLabel;
    };
    // The typed text on OK (possibly empty), nothing on cancel.
    virtual std::optional<QString> prompt(const PromptOptions& options) = 0;
};
