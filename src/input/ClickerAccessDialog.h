#pragma once

#include <QDialog>

#include <vector>

struct InputDeviceInfo;
class QLabel;
class QListWidget;
class QProcess;
class QPushButton;
class QTemporaryFile;

// Says why presses are not heard while another program has the focus, lists
// the remotes it can see and installs, once and as root, the rule that makes
// the chosen ones readable.
class ClickerAccessDialog : public QDialog {
    Q_OBJECT
public:
    ClickerAccessDialog(const std::vector<InputDeviceInfo>& devices, bool trusted, QWidget* parent = nullptr);

private:
    void install();
    void finishInstall(bool ok, const QString& error);

    QListWidget* list_;
    QLabel* status_;
    QPushButton* installButton_;
    QProcess* process_ = nullptr;
    QTemporaryFile* ruleFile_ = nullptr;
};
