#pragma once

#include "platform/Dialogs.h"

// Alerts, file panels and the text prompt as Qt dialogs.
class QtDialogs final : public Dialogs {
public:
    void warning(const QString& title, const QString& informativeText) override;
    QStringList openPanel(const OpenOptions& options) override;
    std::optional<QString> savePanel(const SaveOptions& options) override;
    std::optional<QString> prompt(const PromptOptions& options) override;
};
