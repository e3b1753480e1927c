#include "ClickerAccessDialog.h"

#include "input/ClickerAccessRule.h"
#include "l10n/L10n.h"
#include "platform/InputSource.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryFile>
#include <QVBoxLayout>

namespace {
constexpr int vendorRole = Qt::UserRole;
constexpr int productRole = Qt::UserRole + 1;
constexpr int nameRole = Qt::UserRole + 2;
}

ClickerAccessDialog::ClickerAccessDialog(const std::vector<InputDeviceInfo>& devices, bool trusted, QWidget* parent)
    : QDialog(parent)
{
    setWindowTitle(L10n::t(QStringLiteral("access.title")));
    auto* layout = new QVBoxLayout(this);
    auto* reason = new QLabel(L10n::t(trusted ? QStringLiteral("access.reason_ok") : QStringLiteral("access.reason")));
    reason->setWordWrap(true);
    layout->addWidget(reason);

    list_ = new QListWidget;
    bool anyLocked = false;
    for (const InputDeviceInfo& device : devices) {
        if (device.node.isEmpty())
            continue;  // known to the X server only: nothing to allow
        auto* item = new QListWidgetItem(list_);
        item->setData(vendorRole, device.vendor);
        item->setData(productRole, device.product);
        item->setData(nameRole, device.name);
        if (device.readable) {
            item->setText(device.name + QStringLiteral(" — ") + L10n::t(QStringLiteral("access.ok")));
            item->setFlags(Qt::ItemIsEnabled);
        } else {
            anyLocked = true;
            item->setText(device.name);
            item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
            // A keyboard is the operator's own; a device with presenter keys
            // that is no full keyboard is most likely the remote.
            item->setCheckState(device.presenter ? Qt::Checked : Qt::Unchecked);
        }
    }
    auto* listLabel = new QLabel(L10n::t(anyLocked ? QStringLiteral("access.remotes") : QStringLiteral("access.no_remotes")));
    listLabel->setWordWrap(true);
    layout->addWidget(listLabel);
    layout->addWidget(list_);

    status_ = new QLabel;
    status_->setWordWrap(true);
    layout->addWidget(status_);

    auto* buttons = new QDialogButtonBox;
    installButton_ = buttons->addButton(L10n::t(QStringLiteral("access.install")), QDialogButtonBox::ActionRole);
    installButton_->setEnabled(anyLocked);
    buttons->addButton(L10n::t(QStringLiteral("access.close")), QDialogButtonBox::RejectRole);
    connect(installButton_, &QPushButton::clicked, this, &ClickerAccessDialog::install);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
}

void ClickerAccessDialog::install()
{
    std::vector<ClickerAccessRule::Remote> chosen;
    for (int i = 0; i < list_->count(); ++i) {
        const QListWidgetItem* item = list_->item(i);
        if ((item->flags() & Qt::ItemIsUserCheckable) && item->checkState() == Qt::Checked)
            chosen.push_back({static_cast<uint16_t>(item->data(vendorRole).toUInt()),
                              static_cast<uint16_t>(item->data(productRole).toUInt()), item->data(nameRole).toString()});
    }
    if (chosen.empty() || process_)
        return;
    delete ruleFile_;
    ruleFile_ = new QTemporaryFile(this);
    if (!ruleFile_->open() || ruleFile_->write(ClickerAccessRule::text(chosen).toUtf8()) < 0 || !ruleFile_->flush()) {
        finishInstall(false, ruleFile_->errorString());
        return;
    }
    ruleFile_->setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup | QFileDevice::ReadOther);
    installButton_->setEnabled(false);
    process_ = new QProcess(this);
    connect(process_, &QProcess::finished, this, [this](int code, QProcess::ExitStatus status) {
        const QString error = QString::fromLocal8Bit(process_->readAllStandardError()).trimmed();
        finishInstall(status == QProcess::NormalExit && code == 0, error.isEmpty() ? QString::number(code) : error);
    });
    connect(process_, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            finishInstall(false, process_->errorString());
    });
    process_->start(QStringLiteral("pkexec"), ClickerAccessRule::installCommand(ruleFile_->fileName()));
}

void ClickerAccessDialog::finishInstall(bool ok, const QString& error)
{
    status_->setText(ok ? L10n::t(QStringLiteral("access.installed")) : L10n::t(QStringLiteral("access.failed"), error));
    installButton_->setEnabled(!ok);
    if (process_)
        process_->deleteLater();
    process_ = nullptr;
}
