#pragma once

#include <QPoint>
#include <QRectF>
#include <QWidget>

class AppModel;
class OutputContentView;
class QMouseEvent;
class QScreen;

// The audience's window: frameless, black, outside the task bar and the window
// switcher, shown without taking the keyboard focus from the console. It holds
// one `OutputContentView`, which does all the drawing.
//
// Where clients may place their windows (X11), the window takes the output
// rectangle itself and, for a full-display output, the full-screen state, so
// that panels never cover the picture. Where they may not (Wayland), the window
// is full screen on the display and the picture sits in the rectangle, black
// around it.
class OutputWindow : public QWidget {
    Q_OBJECT
public:
    static constexpr const char* identifier = "pdf-brelvonic-output";

    explicit OutputWindow(AppModel& model);

    OutputContentView* content() const { return content_; }

    // Puts the picture at `frame` on the display of frame `screenFrame`
    // (global device-independent pixels); `fullScreen` for a full-display output.
    void place(const QRectF& frame, const QRectF& screenFrame, bool fullScreen);
    void setAlwaysOnTop(bool onTop);
    bool isAlwaysOnTop() const;
    // Dragging the background moves the window (a click still pages on).
    void setMovableByBackground(bool movable) { movable_ = movable; }
    bool isMovableByBackground() const { return movable_; }
    // Takes effect at once, also with the pointer over the window.
    void setHidesCursor(bool hides);
    bool hidesCursor() const { return hidesCursor_; }
    // Orders the window in without activating it.
    void present();

    // False where the windowing system places every window itself.
    static bool clientsPlaceWindows();

    // Where the window and, inside it, the picture go for an output at
    // `frame` on the display of frame `screenFrame` (both global): the frame
    // itself when clients place windows, else the whole display with the
    // picture at the frame's place in it.
    struct Layout {
        QRect window;
        QRect picture;  // in the window's coordinates
        bool operator==(const Layout&) const = default;
    };
    static Layout layout(const QRectF& frame, const QRectF& screenFrame, bool clientsPlace);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    // Closing the window (from the window manager) hides the output.
    void closeEvent(QCloseEvent* event) override;

private:
    // Marks the window as one the task bar and window switcher leave out (X11).
    void markAuxiliary();
    QScreen* screenAt(const QRectF& screenFrame) const;

    AppModel& model_;
    OutputContentView* content_;
    bool movable_ = false;
    bool hidesCursor_ = true;
    // A press on the background waiting to become a click or a drag.
    bool pressPending_ = false;
    bool dragging_ = false;
    bool forwarding_ = false;
    QPoint pressGlobal_;
    QPoint pressWindowPos_;
    QPointF pressLocal_;
};
