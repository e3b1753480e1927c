#include "MainWindow.h"

#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "platform/Dialogs.h"
#include "show/DocumentIntake.h"
#include "stage/StageCanvas.h"

#include <QDragEnterEvent>
#include <QDragLeaveEvent>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QVBoxLayout>

MainWindow::MainWindow(AppModel& model, QWidget* parent)
    : QMainWindow(parent)
    , model_(model)
{
    setWindowTitle(QStringLiteral("PDF Brelvonic"));
    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(8, 8, 8, 8);
    slide_ = new StageCanvas(model_, central);
    pageLabel_ = new QLabel(central);
    pageLabel_->setAlignment(Qt::AlignCenter);
    layout->addWidget(slide_, 1);
    layout->addWidget(pageLabel_);
    setCentralWidget(central);

    // The menus are installed by the shell (src/app/AppCommands).
    follower_ = new obs::Follower([this] { update(); }, this);
    follower_->start();
    resize(1100, 700);
    // Drops land on the window whatever lies under the pointer.
    setAcceptDrops(true);
}

void MainWindow::update()
{
    (void)model_.interfaceLanguage();  // the label's texts follow it too
    if (!model_.document()) {
        pageLabel_->setText(L10n::t(QStringLiteral("slide.none")));
        return;
    }
    QString text = L10n::t(QStringLiteral("slide.of"), model_.pageIndex() + 1, model_.pageCount());
    text += QStringLiteral("  ·  ") + model_.fileTitle();
    if (!model_.jumpBuffer().isEmpty())
        text += QStringLiteral("  ·  → ") + model_.jumpBuffer();
    pageLabel_->setText(text);
}

void MainWindow::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Right:
    case Qt::Key_Down:
    case Qt::Key_PageDown:
    case Qt::Key_Space:
        model_.goToNextSlide();
        return;
    case Qt::Key_Left:
    case Qt::Key_Up:
    case Qt::Key_PageUp:
        model_.goToPreviousSlide();
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (model_.jumpBuffer().isEmpty())
            model_.goToNextSlide();
        else
            model_.commitJump();
        return;
    case Qt::Key_Escape:
        model_.clearJumpBuffer();
        return;
    case Qt::Key_Delete:
    case Qt::Key_Clear:
        // Take back the last typed digit.
        model_.removeLastJumpDigit();
        return;
    default:
        break;
    }
    if (event->key() >= Qt::Key_0 && event->key() <= Qt::Key_9) {
        model_.appendJumpDigit(QString(QChar(u'0' + (event->key() - Qt::Key_0))));
        return;
    }
    QMainWindow::keyPressEvent(event);
}

namespace {
// Answers a drag or a drop with the copy action when it carries files.
QStringList acceptFiles(QDropEvent* event)
{
    const QStringList paths = DocumentIntake::fileURLs(event->mimeData());
    if (paths.isEmpty()) {
        event->ignore();
        return paths;
    }
    event->setDropAction(Qt::CopyAction);
    event->accept();
    return paths;
}
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (!acceptFiles(event).isEmpty())
        setDropHighlight(true);
}

void MainWindow::dragMoveEvent(QDragMoveEvent* event)
{
    acceptFiles(event);
}

void MainWindow::dragLeaveEvent(QDragLeaveEvent* event)
{
    setDropHighlight(false);
    event->accept();
}

void MainWindow::dropEvent(QDropEvent* event)
{
    setDropHighlight(false);
    const QStringList paths = acceptFiles(event);
    if (paths.isEmpty())
        return;
    // Taken on the next turn: the drag source is answered first, and an
    // alert about a bad file does not run inside the drop.
    QMetaObject::invokeMethod(this, [this, paths] { model_.ingestDroppedURLs(paths); }, Qt::QueuedConnection);
}

void MainWindow::setDropHighlight(bool shown)
{
    if (!dropHighlight_) {
        if (!shown)
            return;
        dropHighlight_ = new QLabel(this);
        dropHighlight_->setObjectName(QStringLiteral("dropHighlight"));
        dropHighlight_->setAlignment(Qt::AlignCenter);
        dropHighlight_->setWordWrap(true);
        // Clicks and the drag itself go to the window below.
        dropHighlight_->setAttribute(Qt::WA_TransparentForMouseEvents);
        const QColor accent = palette().color(QPalette::Highlight);
        dropHighlight_->setStyleSheet(QStringLiteral("QLabel { background: rgba(%1, %2, %3, 56); border: 3px dashed rgb(%1, %2, %3);"
                                                     " border-radius: 14px; font-size: 22px; font-weight: 600; }")
                                          .arg(accent.red())
                                          .arg(accent.green())
                                          .arg(accent.blue()));
    }
    if (shown) {
        dropHighlight_->setText(L10n::t(QStringLiteral("drop.set")));
        dropHighlight_->setGeometry(rect().adjusted(6, 6, -6, -6));
        dropHighlight_->raise();
    }
    dropHighlight_->setVisible(shown);
}
