#include "OutputWindow.h"

#include "model/AppModel.h"
#include "output/OutputContentView.h"

#include <QApplication>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QScreen>
#include <QWindow>

#include <algorithm>
#include <cmath>
#include <vector>

namespace {
QRect pixelRect(const QRectF& r)
{
    return QRect(static_cast<int>(std::lround(r.x())), static_cast<int>(std::lround(r.y())),
                 static_cast<int>(std::lround(r.width())), static_cast<int>(std::lround(r.height())));
}

// Adds the task-bar and pager states to an unmapped X11 window (below, where
// the X headers cannot clash with Qt's names).
void addSkipStates(WId window);
}

OutputWindow::OutputWindow(AppModel& model)
    : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus)
    , model_(model)
{
    setObjectName(QString::fromLatin1(identifier));
    setWindowRole(QString::fromLatin1(identifier));
    // The console keeps the keyboard; closing the console ends the program
    // whatever this window does.
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_QuitOnClose, false);
    // Black wherever the picture does not reach.
    QPalette black = palette();
    black.setColor(QPalette::Window, Qt::black);
    setPalette(black);
    setAutoFillBackground(true);
    setMouseTracking(true);

    content_ = new OutputContentView(model, this);
    content_->setMouseTracking(true);
    content_->installEventFilter(this);
    setHidesCursor(true);
    resize(1280, 720);
    content_->setGeometry(rect());
}

bool OutputWindow::clientsPlaceWindows()
{
    return !QGuiApplication::platformName().startsWith(QLatin1String("wayland"));
}

QScreen* OutputWindow::screenAt(const QRectF& screenFrame) const
{
    const QRect wanted = pixelRect(screenFrame);
    for (QScreen* screen : QGuiApplication::screens())
        if (screen->geometry() == wanted)
            return screen;
    return QGuiApplication::screenAt(wanted.center());
}

OutputWindow::Layout OutputWindow::layout(const QRectF& frame, const QRectF& screenFrame, bool clientsPlace)
{
    if (clientsPlace) {
        const QRect window = pixelRect(frame);
        return {window, QRect(QPoint(0, 0), window.size())};
    }
    return {pixelRect(screenFrame), pixelRect(frame.translated(-screenFrame.topLeft()))};
}

void OutputWindow::place(const QRectF& frame, const QRectF& screenFrame, bool fullScreen)
{
    winId();  // the native window, so that it can be moved and take states
    if (QScreen* screen = screenAt(screenFrame)) {
        if (windowHandle() && windowHandle()->screen() != screen)
            windowHandle()->setScreen(screen);
    }
    const bool clientsPlace = clientsPlaceWindows();
    const Layout target = layout(frame, screenFrame, clientsPlace);
    // Full screen keeps desktop panels off the picture; where the
    // compositor places windows it is the only way onto a chosen display.
    if (fullScreen || !clientsPlace) {
        setGeometry(target.window);
        setWindowState(windowState() | Qt::WindowFullScreen);
    } else {
        setWindowState(windowState() & ~Qt::WindowFullScreen);
        setGeometry(target.window);
    }
    content_->setGeometry(target.picture);
    content_->repaint();
}

void OutputWindow::setAlwaysOnTop(bool onTop)
{
    if (isAlwaysOnTop() == onTop)
        return;
    if (QWindow* handle = windowHandle()) {
        // Through the window, not the widget: a widget would be hidden and
        // shown again, and the audience would see it flash.
        handle->setFlag(Qt::WindowStaysOnTopHint, onTop);
        overrideWindowFlags(handle->flags());
    } else {
        setWindowFlag(Qt::WindowStaysOnTopHint, onTop);
    }
    if (onTop && isVisible())
        raise();
}

bool OutputWindow::isAlwaysOnTop() const
{
    return windowFlags().testFlag(Qt::WindowStaysOnTopHint);
}

void OutputWindow::setHidesCursor(bool hides)
{
    hidesCursor_ = hides;
    const Qt::CursorShape shape = hides ? Qt::BlankCursor : Qt::ArrowCursor;
    setCursor(shape);
    content_->setCursor(shape);
}

void OutputWindow::present()
{
    markAuxiliary();
    show();
    raise();
}

void OutputWindow::markAuxiliary()
{
    if (QGuiApplication::platformName() == QLatin1String("xcb"))
        addSkipStates(winId());
}

void OutputWindow::closeEvent(QCloseEvent* event)
{
    // Hidden, never closed: the model says whether the output shows.
    event->ignore();
    if (model_.isOutputVisible.peek())
        model_.toggleOutputVisible();
}

bool OutputWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != content_)
        return QWidget::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::MouseButtonPress: {
        auto* press = static_cast<QMouseEvent*>(event);
        if (!movable_ || forwarding_ || press->button() != Qt::LeftButton || pressPending_)
            return false;
        // Held back: it becomes a click (next slide) or a drag of the window.
        pressPending_ = true;
        dragging_ = false;
        pressGlobal_ = press->globalPosition().toPoint();
        pressLocal_ = press->position();
        pressWindowPos_ = pos();
        return true;
    }
    case QEvent::MouseMove: {
        if (!pressPending_)
            return false;
        auto* motion = static_cast<QMouseEvent*>(event);
        const QPoint delta = motion->globalPosition().toPoint() - pressGlobal_;
        if (!dragging_ && delta.manhattanLength() >= QApplication::startDragDistance()) {
            dragging_ = true;
            // The window manager moves it where there is one.
            if (windowHandle() && windowHandle()->startSystemMove()) {
                pressPending_ = false;
                return true;
            }
        }
        if (dragging_)
            move(pressWindowPos_ + delta);
        return true;
    }
    case QEvent::MouseButtonRelease: {
        auto* release = static_cast<QMouseEvent*>(event);
        if (!pressPending_ || release->button() != Qt::LeftButton)
            return false;
        pressPending_ = false;
        if (!dragging_) {
            // A click: the view gets the press it would have had.
            QMouseEvent click(QEvent::MouseButtonPress, pressLocal_, release->scenePosition(),
                              release->globalPosition(), Qt::LeftButton, Qt::LeftButton, release->modifiers());
            forwarding_ = true;
            QCoreApplication::sendEvent(content_, &click);
            forwarding_ = false;
        }
        dragging_ = false;
        return true;
    }
    default:
        return false;
    }
}

#include <X11/Xatom.h>
#include <X11/Xlib.h>

namespace {
void addSkipStates(WId id)
{
    auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    Display* display = x11 ? x11->display() : nullptr;
    if (!display)
        return;
    // Before mapping, the window's own state list is what the window manager
    // reads; Qt adds its states to the ones already there.
    const Window window = static_cast<Window>(id);
    const Atom state = XInternAtom(display, "_NET_WM_STATE", False);
    std::vector<Atom> atoms;
    Atom type = 0;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    if (XGetWindowProperty(display, window, state, 0, 64, False, XA_ATOM, &type, &format, &count, &after, &data) ==
            Success &&
        data) {
        if (format == 32) {
            const auto* existing = reinterpret_cast<const Atom*>(data);
            atoms.assign(existing, existing + count);
        }
        XFree(data);
    }
    for (const char* name : {"_NET_WM_STATE_SKIP_TASKBAR", "_NET_WM_STATE_SKIP_PAGER"}) {
        const Atom atom = XInternAtom(display, name, False);
        if (std::find(atoms.begin(), atoms.end(), atom) == atoms.end())
            atoms.push_back(atom);
    }
    XChangeProperty(display, window, state, XA_ATOM, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(atoms.data()), static_cast<int>(atoms.size()));
    XFlush(display);
}
}
