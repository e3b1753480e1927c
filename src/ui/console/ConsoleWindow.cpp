#include "ui/console/ConsoleWindow.h"

#include "l10n/L10n.h"
#include "model/AppModel.h"
#include "show/DocumentIntake.h"
#include "ui/console/ClickerSection.h"
#include "ui/console/ConsoleStyle.h"
#include "ui/console/ConsoleTexts.h"
#include "ui/console/CuesSection.h"
#include "ui/console/DropOverlay.h"
#include "ui/console/EmptyStage.h"
#include "ui/console/NextSlideSection.h"
#include "ui/console/NoteBar.h"
#include "ui/console/OutputSection.h"
#include "ui/console/SetListSection.h"
#include "ui/console/StageView.h"
#include "ui/console/ThumbnailStrip.h"
#include "ui/console/TimerBar.h"
#include "ui/console/ToolsSection.h"
#include "ui/settings/SettingsWindow.h"

#include <QAction>
#include <QApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <QSplitter>
#include <QStackedWidget>
#include <QToolBar>
#include <QVBoxLayout>

#include <algorithm>

namespace {
constexpr int sidebarMin = 252;
constexpr int sidebarIdeal = 292;
constexpr int sidebarMax = 360;
}

ConsoleWindow::ConsoleWindow(AppModel& model, QWidget* parent)
    : QMainWindow(parent)
    , model_(model)
{
    setObjectName(QStringLiteral("operator"));
    setMinimumSize(980, 640);
    setAcceptDrops(true);
    resize(1180, 760);

    auto* toolbar = addToolBar(QString());
    toolbar->setObjectName(QStringLiteral("consoleToolbar"));
    toolbar->setMovable(false);
    toolbar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    toolbar->setIconSize(QSize(22, 22));
    toolbar->toggleViewAction()->setVisible(false);
    const auto action = [&](const char* name, const QString& icon, auto run) {
        QAction* a = toolbar->addAction(ConsoleStyle::icon(icon), QString());
        a->setObjectName(QString::fromLatin1(name));
        connect(a, &QAction::triggered, this, run);
        return a;
    };
    back_ = action("back", QStringLiteral("go-previous"), [this] { model_.goToPreviousSlide(); });
    forward_ = action("forward", QStringLiteral("go-next"), [this] { model_.goToNextSlide(); });
    toolbar->addSeparator();
    // Panels open once the toolbar's click is done.
    open_ = action("open", QStringLiteral("document-open"), [this] {
        QMetaObject::invokeMethod(this, [this] { model_.presentOpenPanel(); }, Qt::QueuedConnection);
    });
    save_ = action("saveShow", QStringLiteral("document-save"), [this] {
        QMetaObject::invokeMethod(this, [this] { model_.presentSaveShowPanel(false); }, Qt::QueuedConnection);
    });
    auto* spacer = new QWidget(toolbar);
    spacer->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    toolbar->addWidget(spacer);
    settings_ = action("settings", QStringLiteral("preferences-system"), [this] { showSettings(); });

    // The sidebar: six sections, scrolling when the window is short.
    auto* sections = new QWidget;
    sections->setObjectName(QStringLiteral("sidebarSections"));
    auto* column = new QVBoxLayout(sections);
    column->setContentsMargins(12, 6, 12, 12);
    column->setSpacing(10);
    column->addWidget(new NextSlideSection(model_, sections));
    column->addWidget(new SetListSection(model_, sections));
    column->addWidget(new CuesSection(model_, sections));
    column->addWidget(new OutputSection(model_, sections));
    column->addWidget(new ToolsSection(model_, sections));
    column->addWidget(new ClickerSection(model_, sections));
    column->addStretch(1);
    auto* scroll = new QScrollArea;
    scroll->setObjectName(QStringLiteral("sidebar"));
    scroll->setWidget(sections);
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setMinimumWidth(sidebarMin);
    scroll->setMaximumWidth(sidebarMax);
    sidebar_ = scroll;
    sections_ = sections;
    // Relabelled sections may need more width (the longest texts are German
    // and Russian): the sidebar grows within its limits rather than clip.
    sections->installEventFilter(this);

    // The detail area: the empty stage, or the stage with note, timer and strip.
    detail_ = new QStackedWidget;
    empty_ = new EmptyStage(model_, detail_);
    showing_ = new QWidget(detail_);
    auto* stageColumn = new QVBoxLayout(showing_);
    stageColumn->setContentsMargins(0, 0, 0, 0);
    stageColumn->setSpacing(0);
    stage_ = new StageView(model_, showing_);
    stageColumn->addWidget(stage_, 1);
    stageColumn->addWidget(new NoteBar(model_, showing_));
    stageColumn->addWidget(new TimerBar(model_, showing_));
    thumbnails_ = new ThumbnailStrip(model_, showing_);
    stageColumn->addWidget(thumbnails_);
    detail_->addWidget(empty_);
    detail_->addWidget(showing_);

    split_ = new QSplitter(Qt::Horizontal);
    split_->setObjectName(QStringLiteral("consoleSplit"));
    split_->addWidget(sidebar_);
    split_->addWidget(detail_);
    split_->setCollapsible(0, false);
    split_->setCollapsible(1, false);
    split_->setStretchFactor(1, 1);
    split_->setSizes({sidebarIdeal, width() - sidebarIdeal});
    setCentralWidget(split_);

    dropOverlay_ = new DropOverlay(model_, this);
    // Drops land on the window whatever lies under the pointer: files are
    // caught before any child (a text field, the set list) can take them.
    qApp->installEventFilter(this);

    follower_ = new obs::Follower([this] { refresh(); }, this);
    follower_->start();
    // The view appears: the displays and the clicker's access as they are now.
    model_.refreshDisplays();
    model_.refreshClickerTrust();
}

ConsoleWindow::~ConsoleWindow()
{
    qApp->removeEventFilter(this);
}

void ConsoleWindow::refresh()
{
    const bool open = model_.document() != nullptr;
    setWindowTitle(ConsoleTexts::windowTitle(model_));
    detail_->setCurrentWidget(open ? showing_ : empty_);
    back_->setText(L10n::t(QStringLiteral("back")));
    forward_->setText(L10n::t(QStringLiteral("forward")));
    open_->setText(L10n::t(QStringLiteral("open")));
    open_->setToolTip(L10n::t(QStringLiteral("open.pdf")));
    save_->setText(L10n::t(QStringLiteral("save.show")));
    save_->setToolTip(L10n::t(QStringLiteral("save.set")));
    settings_->setText(L10n::t(QStringLiteral("settings")));
    settings_->setToolTip(L10n::t(QStringLiteral("settings")));
    back_->setEnabled(model_.canGoPrevious());
    forward_->setEnabled(model_.canGoNext());
    save_->setEnabled(!model_.playlist().empty());
}

void ConsoleWindow::showSettings()
{
    if (openSettings_) {
        openSettings_();
        return;
    }
    if (!settingsWindow_) {
        settingsWindow_ = new SettingsWindow(model_);
        settingsWindow_->setAttribute(Qt::WA_DeleteOnClose);
    }
    settingsWindow_->show();
    settingsWindow_->raise();
    settingsWindow_->activateWindow();
}

void ConsoleWindow::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    dropOverlay_->setGeometry(rect());
}

void ConsoleWindow::setDropHighlight(bool shown)
{
    if (shown) {
        dropOverlay_->setGeometry(rect());
        dropOverlay_->raise();
    }
    dropOverlay_->setVisible(shown);
}

bool ConsoleWindow::catchDrag(QEvent* event)
{
    switch (event->type()) {
    case QEvent::DragEnter:
    case QEvent::DragMove: {
        auto* drag = static_cast<QDragMoveEvent*>(event);
        if (DocumentIntake::fileURLs(drag->mimeData()).isEmpty())
            return false;  // not files: the widget's own business (reordering the set)
        drag->setDropAction(Qt::CopyAction);
        drag->accept();
        setDropHighlight(true);
        return true;
    }
    case QEvent::DragLeave:
        setDropHighlight(false);
        return false;
    case QEvent::Drop: {
        auto* drop = static_cast<QDropEvent*>(event);
        const QStringList paths = DocumentIntake::fileURLs(drop->mimeData());
        if (paths.isEmpty())
            return false;
        setDropHighlight(false);
        drop->setDropAction(Qt::CopyAction);
        drop->accept();
        // Taken on the next turn: the drag source is answered first, and an
        // alert about a bad file does not run inside the drop.
        QMetaObject::invokeMethod(this, [this, paths] { model_.ingestDroppedURLs(paths); }, Qt::QueuedConnection);
        return true;
    }
    default:
        return false;
    }
}

void ConsoleWindow::fitSidebar()
{
    auto* scroll = static_cast<QScrollArea*>(sidebar_);
    const int need = sections_->minimumSizeHint().width() + scroll->verticalScrollBar()->sizeHint().width();
    const int width = std::clamp(need, sidebarMin, sidebarMax);
    if (scroll->minimumWidth() == width)
        return;
    scroll->setMinimumWidth(width);
    QList<int> sizes = split_->sizes();
    if (sizes.size() == 2 && sizes[0] < width) {
        const int total = sizes[0] + sizes[1];
        split_->setSizes({width, total - width});
    }
}

bool ConsoleWindow::eventFilter(QObject* watched, QEvent* event)
{
    const auto type = event->type();
    if (watched == sections_ && type == QEvent::LayoutRequest)
        QMetaObject::invokeMethod(this, [this] { fitSidebar(); }, Qt::QueuedConnection);
    if (type == QEvent::DragEnter || type == QEvent::DragMove || type == QEvent::DragLeave || type == QEvent::Drop) {
        auto* widget = qobject_cast<QWidget*>(watched);
        if (widget && widget->window() == this && catchDrag(event))
            return true;
    }
    return QMainWindow::eventFilter(watched, event);
}
