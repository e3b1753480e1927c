// Show files as the show decoder meets them: whatever decodes must encode
// and decode again to the same show.
#include "show/SavedShow.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    const auto show = SavedShow::decode(bytes);
    if (!show)
        return 0;
    for (const SavedShowItem& item : show->items)
        (void)item.notesByPage();
    const QByteArray again = show->encode();
    const auto reread = SavedShow::decode(again);
    if (!reread || !(*reread == *show) || reread->encode() != again)
        std::abort();
    return 0;
}
