#include "XkbCharacters.h"

#include <QFile>
#include <QRegularExpression>

#include <xkbcommon/xkbcommon.h>

XkbCharacters::Names XkbCharacters::sessionNames()
{
    Names names;
    const auto env = [](const char* name) { return qEnvironmentVariable(name); };
    names.rules = env("XKB_DEFAULT_RULES");
    names.model = env("XKB_DEFAULT_MODEL");
    names.layout = env("XKB_DEFAULT_LAYOUT");
    names.variant = env("XKB_DEFAULT_VARIANT");
    names.options = env("XKB_DEFAULT_OPTIONS");
    if (!names.layout.isEmpty())
        return names;
    // Debian keeps the console's and the session's layout here.
    QFile file(QStringLiteral("/etc/default/keyboard"));
    if (file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        static const QRegularExpression line(QStringLiteral("^\\s*(XKB\\w+)=\"?([^\"\\n]*)\"?"),
                                             QRegularExpression::MultilineOption);
        auto it = line.globalMatch(QString::fromUtf8(file.readAll()));
        while (it.hasNext()) {
            const auto m = it.next();
            const QString key = m.captured(1), value = m.captured(2).trimmed();
            if (key == u"XKBMODEL")
                names.model = value;
            else if (key == u"XKBLAYOUT")
                names.layout = value;
            else if (key == u"XKBVARIANT")
                names.variant = value;
            else if (key == u"XKBOPTIONS")
                names.options = value;
        }
    }
    return names;
}

XkbCharacters::XkbCharacters(const Names& names)
{
    context_ = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    if (!context_)
        return;
    const QByteArray rules = names.rules.toUtf8(), model = names.model.toUtf8(), layout = names.layout.toUtf8(),
                     variant = names.variant.toUtf8(), options = names.options.toUtf8();
    const auto orNull = [](const QByteArray& s) { return s.isEmpty() ? nullptr : s.constData(); };
    const xkb_rule_names rmlvo{orNull(rules), orNull(model), orNull(layout), orNull(variant), orNull(options)};
    keymap_ = xkb_keymap_new_from_names(context_, &rmlvo, XKB_KEYMAP_COMPILE_NO_FLAGS);
}

XkbCharacters::~XkbCharacters()
{
    if (keymap_)
        xkb_keymap_unref(keymap_);
    if (context_)
        xkb_context_unref(context_);
}

QString XkbCharacters::chars(uint16_t keyCode) const
{
    if (!keymap_)
        return {};
    // X key codes are the kernel's plus 8; the first layout, first level.
    const xkb_keysym_t* syms = nullptr;
    const int count = xkb_keymap_key_get_syms_by_level(keymap_, keyCode + 8u, 0, 0, &syms);
    QString out;
    for (int i = 0; i < count; ++i) {
        const uint32_t ch = xkb_keysym_to_utf32(syms[i]);
        if (ch >= 0x20 && ch != 0x7f)
            out += QString::fromUcs4(reinterpret_cast<const char32_t*>(&ch), 1);
    }
    return out;
}
