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
#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
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

    // The file and show commands. The slide keys are handled below as well,
    // since they must work without opening a menu.
    const auto hasSet = [this] { return !model_.playlist().empty(); };
    fileMenu_ = menuBar()->addMenu(QString());
    addCommand(fileMenu_, QStringLiteral("open.pdf_ellipsis"), QKeySequence::Open, [this] { model_.presentOpenPanel(); });
    addCommand(fileMenu_, QStringLiteral("open.folder_ellipsis"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O),
               [this] { model_.presentFolderPanel(); });
    addCommand(fileMenu_, QStringLiteral("add.to_set_ellipsis"), {}, [this] { model_.presentAddToPlaylistPanel(); });
    recentMenu_ = fileMenu_->addMenu(QString());
    // Filled as it opens: always the current list, in the current language.
    connect(recentMenu_, &QMenu::aboutToShow, this, &MainWindow::fillRecentMenu);
    addCommand(fileMenu_, QStringLiteral("close.document"), {}, [this] { model_.closeDocument(); },
               [this] { return model_.document() != nullptr; });
    fileMenu_->addSeparator();
    addCommand(fileMenu_, QStringLiteral("open.show_ellipsis"), QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_O),
               [this] { model_.presentOpenShowPanel(); });
    addCommand(fileMenu_, QStringLiteral("save.show"), QKeySequence::Save, [this] { model_.presentSaveShowPanel(false); },
               hasSet);
    addCommand(fileMenu_, QStringLiteral("save.show_as"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S),
               [this] { model_.presentSaveShowPanel(true); }, hasSet);
    showMenu_ = menuBar()->addMenu(QString());
    addCommand(showMenu_, QStringLiteral("slide.next"), {}, [this] { model_.goToNextSlide(); });
    addCommand(showMenu_, QStringLiteral("slide.prev"), {}, [this] { model_.goToPreviousSlide(); });
    showMenu_->addSeparator();
    addCommand(showMenu_, QStringLiteral("blackout"), {}, [this] { model_.toggleBlackout(); });
    addCommand(showMenu_, QStringLiteral("freeze"), {}, [this] { model_.toggleFreeze(); });
    addCommand(showMenu_, QStringLiteral("laser"), {}, [this] { model_.setTool(StageTool::laser); });
    addCommand(showMenu_, QStringLiteral("marker"), {}, [this] { model_.setTool(StageTool::marker); });
    addCommand(showMenu_, QStringLiteral("frame"), {}, [this] { model_.setTool(StageTool::frame); });
    addCommand(showMenu_, QStringLiteral("zoom"), {}, [this] { model_.setTool(StageTool::zoom); });
    addCommand(showMenu_, QStringLiteral("clear.marks"), {}, [this] { model_.clearAnnotations(); });
    addCommand(showMenu_, QStringLiteral("undo.stroke"), {}, [this] { model_.undoAnnotation(); },
               [this] { return !model_.annotationUndo().empty(); });
    showMenu_->addSeparator();
    addCommand(showMenu_, QStringLiteral("bookmark.this"), QKeySequence(Qt::CTRL | Qt::Key_B),
               [this] { model_.promptAddBookmark(); });
    addCommand(showMenu_, QStringLiteral("cue.next"), {}, [this] { model_.goToNextCue(); });
    addCommand(showMenu_, QStringLiteral("cue.prev"), {}, [this] { model_.goToPreviousCue(); });

    // Two followers: a page turn relabels the page, not every menu command.
    menuFollower_ = new obs::Follower([this] { updateMenus(); }, this);
    menuFollower_->start();
    follower_ = new obs::Follower([this] { update(); }, this);
    follower_->start();
    resize(1100, 700);
    // Drops land on the window whatever lies under the pointer.
    setAcceptDrops(true);
}

void MainWindow::updateMenus()
{
    // Every text is looked up afresh here; reading the language makes a change
    // of it run this again, so the menus relabel at once.
    (void)model_.interfaceLanguage();
    fileMenu_->setTitle(L10n::t(QStringLiteral("files")));
    showMenu_->setTitle(L10n::t(QStringLiteral("menu.show")));
    recentMenu_->setTitle(L10n::t(QStringLiteral("recent")));
    for (const Command& command : commands_) {
        command.action->setText(L10n::t(command.key));
        command.action->setEnabled(!command.enabled || command.enabled());
    }
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

void MainWindow::fillRecentMenu()
{
    recentMenu_->clear();
    const QStringList recent = model_.recentFiles();
    if (recent.isEmpty()) {
        recentMenu_->addAction(L10n::t(QStringLiteral("recent.empty")))->setEnabled(false);
        return;
    }
    for (const QString& path : recent) {
        QAction* item = recentMenu_->addAction(QFileInfo(path).fileName());
        connect(item, &QAction::triggered, this, [this, path] { model_.openRecentFile(path); }, Qt::QueuedConnection);
    }
    recentMenu_->addSeparator();
    QAction* clear = recentMenu_->addAction(L10n::t(QStringLiteral("clear")));
    connect(clear, &QAction::triggered, this, [this] { model_.clearRecentFiles(); }, Qt::QueuedConnection);
}

QAction* MainWindow::addCommand(QMenu* menu, const QString& key, const QKeySequence& shortcut,
                               std::function<void()> run, std::function<bool()> enabled)
{
    QAction* action = menu->addAction(QString());
    action->setShortcut(shortcut);
    // Queued: a panel or alert opens after the menu has closed.
    connect(action, &QAction::triggered, this, [run = std::move(run)] { run(); }, Qt::QueuedConnection);
    commands_.push_back({action, key, std::move(enabled)});
    return action;
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
