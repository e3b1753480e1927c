#include "AppCommands.h"

#include "l10n/L10n.h"
#include "model/AppModel.h"

#include <QAction>
#include <QApplication>
#include <QFileInfo>
#include <QKeySequence>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

AppCommands::AppCommands(AppModel& model, QMainWindow& window, Windows windows)
    : QObject(&window)
    , model_(model)
{
    QMenuBar* bar = window.menuBar();
    const auto hasSet = [this] { return !model_.playlist().empty(); };

    fileMenu_ = bar->addMenu(QString());
    add(fileMenu_, QStringLiteral("open.pdf_ellipsis"), QKeySequence(Qt::CTRL | Qt::Key_O),
        [this] { model_.presentOpenPanel(); });
    add(fileMenu_, QStringLiteral("open.folder_ellipsis"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_O),
        [this] { model_.presentFolderPanel(); });
    add(fileMenu_, QStringLiteral("add.to_set_ellipsis"), {}, [this] { model_.presentAddToPlaylistPanel(); });
    recentMenu_ = fileMenu_->addMenu(QString());
    // Filled as it opens: always the current list, in the current language.
    connect(recentMenu_, &QMenu::aboutToShow, this, &AppCommands::fillRecentMenu);
    add(fileMenu_, QStringLiteral("close.document"), {}, [this] { model_.closeDocument(); },
        [this] { return model_.document() != nullptr; });
    fileMenu_->addSeparator();
    add(fileMenu_, QStringLiteral("open.show_ellipsis"), QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_O),
        [this] { model_.presentOpenShowPanel(); });
    add(fileMenu_, QStringLiteral("save.show"), QKeySequence(Qt::CTRL | Qt::Key_S),
        [this] { model_.presentSaveShowPanel(false); }, hasSet);
    add(fileMenu_, QStringLiteral("save.show_as"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S),
        [this] { model_.presentSaveShowPanel(true); }, hasSet);
    fileMenu_->addSeparator();
    add(fileMenu_, QStringLiteral("settings"), QKeySequence(Qt::CTRL | Qt::Key_Comma), [windows] {
        if (windows.showSettings)
            windows.showSettings();
    });
    fileMenu_->addSeparator();
    // Closing the console ends the program; this is the same from the keyboard.
    add(fileMenu_, QStringLiteral("menu.quit"), QKeySequence(Qt::CTRL | Qt::Key_Q), [&window] { window.close(); });

    // The slide, blackout, freeze and tool commands carry no shortcut: the
    // clicker handles their keys, also while another program has the focus.
    showMenu_ = bar->addMenu(QString());
    add(showMenu_, QStringLiteral("slide.next"), {}, [this] { model_.goToNextSlide(); });
    add(showMenu_, QStringLiteral("slide.prev"), {}, [this] { model_.goToPreviousSlide(); });
    showMenu_->addSeparator();
    add(showMenu_, QStringLiteral("blackout"), {}, [this] { model_.toggleBlackout(); });
    add(showMenu_, QStringLiteral("freeze"), {}, [this] { model_.toggleFreeze(); });
    add(showMenu_, QStringLiteral("laser"), {}, [this] { model_.setTool(StageTool::laser); });
    add(showMenu_, QStringLiteral("marker"), {}, [this] { model_.setTool(StageTool::marker); });
    add(showMenu_, QStringLiteral("frame"), {}, [this] { model_.setTool(StageTool::frame); });
    add(showMenu_, QStringLiteral("zoom"), {}, [this] { model_.setTool(StageTool::zoom); });
    add(showMenu_, QStringLiteral("clear.marks"), {}, [this] { model_.clearAnnotations(); });
    add(showMenu_, QStringLiteral("undo.stroke"), {}, [this] { model_.undoAnnotation(); },
        [this] { return !model_.annotationUndo().empty(); });
    showMenu_->addSeparator();
    add(showMenu_, QStringLiteral("bookmark.this"), QKeySequence(Qt::CTRL | Qt::Key_B),
        [this] { model_.promptAddBookmark(); });
    add(showMenu_, QStringLiteral("cue.next"), {}, [this] { model_.goToNextCue(); });
    add(showMenu_, QStringLiteral("cue.prev"), {}, [this] { model_.goToPreviousCue(); });
    showMenu_->addSeparator();
    // Ctrl+P shows the output instead of printing.
    add(showMenu_, QStringLiteral("output.toggle"), QKeySequence(Qt::CTRL | Qt::Key_P),
        [this] { model_.toggleOutputVisible(); });

    helpMenu_ = bar->addMenu(QString());
    add(helpMenu_, QStringLiteral("about.app"), {}, [windows] {
        if (windows.showAbout)
            windows.showAbout();
    });

    follower_ = new obs::Follower([this] { update(); }, this);
    follower_->start();
}

QAction* AppCommands::command(const QString& key) const
{
    for (const Command& c : commands_)
        if (c.key == key)
            return c.action;
    return nullptr;
}

void AppCommands::update()
{
    // Every text is looked up afresh; reading the language makes a change of
    // it run this again, so the menus relabel at once.
    (void)model_.interfaceLanguage();
    fileMenu_->setTitle(L10n::t(QStringLiteral("files")));
    showMenu_->setTitle(L10n::t(QStringLiteral("menu.show")));
    helpMenu_->setTitle(L10n::t(QStringLiteral("menu.help")));
    recentMenu_->setTitle(L10n::t(QStringLiteral("recent")));
    for (const Command& c : commands_) {
        c.action->setText(L10n::t(c.key));
        c.action->setEnabled(!c.enabled || c.enabled());
    }
}

void AppCommands::fillRecentMenu()
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

QAction* AppCommands::add(QMenu* menu, const QString& key, const QKeySequence& shortcut, std::function<void()> run,
                          std::function<bool()> enabled)
{
    QAction* action = menu->addAction(QString());
    action->setShortcut(shortcut);
    // Queued: a panel or alert opens after the menu has closed.
    connect(action, &QAction::triggered, this, [run = std::move(run)] { run(); }, Qt::QueuedConnection);
    commands_.push_back({action, key, std::move(enabled)});
    return action;
}
