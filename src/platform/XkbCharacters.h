#pragma once

#include <QString>

#include <cstdint>

struct xkb_context;
struct xkb_keymap;

// The characters a kernel key code types with no modifier held, in a keyboard
// layout. Read-only once made, so any thread may ask.
class XkbCharacters {
public:
    struct Names {
        QString rules, model, layout, variant, options;
    };
    // The session's layout: XKB_DEFAULT_* where set, else the system's
    // keyboard settings, else the library's default.
    static Names sessionNames();

    explicit XkbCharacters(const Names& names = sessionNames());
    ~XkbCharacters();
    XkbCharacters(const XkbCharacters&) = delete;
    XkbCharacters& operator=(const XkbCharacters&) = delete;

    bool isValid() const { return keymap_ != nullptr; }
    QString chars(uint16_t keyCode) const;

private:
    xkb_context* context_ = nullptr;
    xkb_keymap* keymap_ = nullptr;
};
