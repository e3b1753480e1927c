#include "MainWindow.h"

#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "platform/Dialogs.h"
#include "stage/StageCanvas.h"

#include <QKeyEvent>
#include <QLabel>
#include <QMenuBar>
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

    fileMenu_ = menuBar()->addMenu(QString());
    openAction_ = fileMenu_->addAction(QString(), this, &MainWindow::openPdfs);
    openAction_->setShortcut(QKeySequence::Open);

    follower_ = new obs::Follower([this] { update(); }, this);
    follower_->start();
    resize(1100, 700);
}

void MainWindow::update()
{
    fileMenu_->setTitle(QStringLiteral("File"));
    openAction_->setText(L10n::t(QStringLiteral("open.pdf_ellipsis")));
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

void MainWindow::openPdfs()
{
    auto dialogs = model_.services().dialogs;
    if (!dialogs)
        return;
    Dialogs::OpenOptions options;
    options.title = L10n::t(QStringLiteral("open.pdf"));
    options.nameFilters = {QStringLiteral("PDF (*.pdf *.PDF)")};
    options.multiple = true;
    const QStringList files = dialogs->openPanel(options);
    if (!files.isEmpty())
        model_.replacePlaylist(files);
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
        model_.jumpBuffer.set(QString());
        return;
    case Qt::Key_Delete:
    case Qt::Key_Clear:
        // Take back the last typed digit.
        if (!model_.jumpBuffer().isEmpty())
            model_.jumpBuffer.mutate([](QString& buffer) { buffer.chop(1); });
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
