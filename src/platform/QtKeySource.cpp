#include "QtKeySource.h"

#include "input/ClickerKeyMap.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>

#include <linux/input-event-codes.h>

#include <cstring>

namespace {

uint64_t flagsOf(Qt::KeyboardModifiers modifiers)
{
    uint64_t flags = 0;
    if (modifiers & Qt::ShiftModifier)
        flags |= ClickerModifier::shift;
    if (modifiers & Qt::ControlModifier)
        flags |= ClickerModifier::control;
    if (modifiers & Qt::AltModifier)
        flags |= ClickerModifier::option;
    if (modifiers & Qt::MetaModifier)
        flags |= ClickerModifier::command;
    return flags;
}

// The kernel code of a key known only by its Qt key (synthesised events,
// platforms without scan codes).
uint16_t codeOfQtKey(int key, bool keypad)
{
    static const uint16_t digits[] = {KEY_0, KEY_1, KEY_2, KEY_3, KEY_4, KEY_5, KEY_6, KEY_7, KEY_8, KEY_9};
    static const uint16_t keypadDigits[] = {KEY_KP0, KEY_KP1, KEY_KP2, KEY_KP3, KEY_KP4,
                                            KEY_KP5, KEY_KP6, KEY_KP7, KEY_KP8, KEY_KP9};
    // Letters in the order of the kernel's codes: rows of a US keyboard.
    static const struct {
        const char* letters;
        uint16_t first;
    } rows[] = {{"QWERTYUIOP", KEY_Q}, {"ASDFGHJKL", KEY_A}, {"ZXCVBNM", KEY_Z}};
    if (key >= Qt::Key_0 && key <= Qt::Key_9)
        return (keypad ? keypadDigits : digits)[key - Qt::Key_0];
    if (key >= Qt::Key_A && key <= Qt::Key_Z) {
        for (const auto& row : rows)
            if (const char* at = std::strchr(row.letters, char(key)))
                return static_cast<uint16_t>(row.first + (at - row.letters));
    }
    switch (key) {
    case Qt::Key_Return: return KEY_ENTER;
    case Qt::Key_Enter: return KEY_KPENTER;
    case Qt::Key_Space: return KEY_SPACE;
    case Qt::Key_PageDown: return KEY_PAGEDOWN;
    case Qt::Key_PageUp: return KEY_PAGEUP;
    case Qt::Key_Right: return KEY_RIGHT;
    case Qt::Key_Left: return KEY_LEFT;
    case Qt::Key_Down: return KEY_DOWN;
    case Qt::Key_Up: return KEY_UP;
    case Qt::Key_Backspace: return KEY_BACKSPACE;
    case Qt::Key_Escape: return KEY_ESC;
    case Qt::Key_Home: return KEY_HOME;
    case Qt::Key_End: return KEY_END;
    case Qt::Key_Clear: return KEY_CLEAR;
    case Qt::Key_Delete: return KEY_DELETE;
    case Qt::Key_Period: return keypad ? KEY_KPDOT : KEY_DOT;
    case Qt::Key_BracketLeft: return KEY_LEFTBRACE;
    case Qt::Key_BracketRight: return KEY_RIGHTBRACE;
    case Qt::Key_MediaNext: return KEY_NEXTSONG;
    case Qt::Key_MediaPrevious: return KEY_PREVIOUSSONG;
    case Qt::Key_AudioForward: return KEY_FASTFORWARD;
    case Qt::Key_AudioRewind: return KEY_REWIND;
    default: return 0;
    }
}

bool scanCodesAreKernelPlus8()
{
    const QString platform = QGuiApplication::platformName();
    return platform == u"xcb" || platform.startsWith(u"wayland");
}

}  // namespace

QtKeySource::~QtKeySource()
{
    stop();
}

bool QtKeySource::start(Deliver deliver)
{
    if (!qApp)
        return false;
    deliver_ = std::move(deliver);
    if (!installed_)
        qApp->installEventFilter(this);
    installed_ = true;
    return true;
}

void QtKeySource::stop()
{
    if (installed_ && qApp)
        qApp->removeEventFilter(this);
    installed_ = false;
    deliver_ = nullptr;
}

std::optional<EventSnapshot> QtKeySource::snapshot(const QKeyEvent& event)
{
    if (event.type() != QEvent::KeyPress)
        return std::nullopt;
    const bool keypad = event.modifiers() & Qt::KeypadModifier;
    uint16_t code = 0;
    // On X11 and Wayland the scan code is the kernel's plus 8; elsewhere (and
    // for synthesised events) only the Qt key is known.
    if (event.nativeScanCode() > 8 && scanCodesAreKernelPlus8())
        code = static_cast<uint16_t>(event.nativeScanCode() - 8);
    else
        code = codeOfQtKey(event.key(), keypad);
    // Characters ignoring modifiers: Qt's key is the unshifted symbol of the
    // session's layout for letters and punctuation.
    QString chars;
    const int key = event.key();
    if (key >= 0x20 && key <= 0x7e)
        chars = QString(QChar(key)).toLower();
    else if (key > 0x7e && key < 0x10000 && QChar(key).isPrint())
        chars = QString(QChar(key)).toLower();
    if (code == 0 && chars.isEmpty())
        return std::nullopt;
    return ClickerKeyMap::keyDown(code, chars, flagsOf(event.modifiers()), event.isAutoRepeat());
}

std::optional<EventSnapshot> QtKeySource::snapshot(const QMouseEvent& event)
{
    if (event.type() != QEvent::MouseButtonPress)
        return std::nullopt;
    int number = -1;
    switch (event.button()) {
    case Qt::MiddleButton: number = 2; break;
    case Qt::BackButton: number = 3; break;     // X11 button 8, BTN_SIDE
    case Qt::ForwardButton: number = 4; break;  // X11 button 9, BTN_EXTRA
    case Qt::ExtraButton3: number = 5; break;
    case Qt::ExtraButton4: number = 6; break;
    default: return std::nullopt;  // the main buttons belong to the widgets
    }
    return ClickerKeyMap::buttonDown(number, flagsOf(event.modifiers()));
}

bool QtKeySource::eventFilter(QObject* watched, QEvent* event)
{
    std::optional<EventSnapshot> snap;
    if (deliver_) {
        if (event->type() == QEvent::KeyPress)
            snap = snapshot(static_cast<const QKeyEvent&>(*event));
        else if (event->type() == QEvent::MouseButtonPress)
            snap = snapshot(static_cast<const QMouseEvent&>(*event));
    }
    // A used input goes no further; any other reaches its widget unchanged.
    if (snap && deliver_(*snap))
        return true;
    return InputSource::eventFilter(watched, event);
}
