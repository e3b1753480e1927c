#include "L10n.h"

#include <QHash>

namespace {

// The English texts; the other languages' tables join it, and it is the
// fallback of each of them.
const QHash<QString, QString>& englishTable()
{
    static const QHash<QString, QString> table{
        {QStringLiteral("lang.label"), QStringLiteral("Interface language")},
        {QStringLiteral("lang.hint"), QStringLiteral("Applies immediately — no restart needed.")},
        {QStringLiteral("tab.interface"), QStringLiteral("Interface")},
        {QStringLiteral("tab.output"), QStringLiteral("Output")},
        {QStringLiteral("tab.show"), QStringLiteral("Show")},
        {QStringLiteral("tab.clicker"), QStringLiteral("Clicker")},
        {QStringLiteral("tab.about"), QStringLiteral("About")},
        {QStringLiteral("open"), QStringLiteral("Open")},
        {QStringLiteral("open.pdf"), QStringLiteral("Open PDF")},
        {QStringLiteral("open.pdf_ellipsis"), QStringLiteral("Open PDF…")},
        {QStringLiteral("open.folder"), QStringLiteral("Open Folder")},
        {QStringLiteral("open.folder_ellipsis"), QStringLiteral("Open Folder…")},
        {QStringLiteral("open.folder_pdf"), QStringLiteral("Open Folder of PDFs")},
        {QStringLiteral("open.show"), QStringLiteral("Show")},
        {QStringLiteral("open.show_ellipsis"), QStringLiteral("Open Show…")},
        {QStringLiteral("open.panel_show"), QStringLiteral("Open Show")},
        {QStringLiteral("add"), QStringLiteral("Add")},
        {QStringLiteral("add.pdf_ellipsis"), QStringLiteral("Add PDF…")},
        {QStringLiteral("add.to_set_ellipsis"), QStringLiteral("Add to Set…")},
        {QStringLiteral("add.to_set"), QStringLiteral("Add to Set")},
        {QStringLiteral("save.show"), QStringLiteral("Save Show")},
        {QStringLiteral("save.show_ellipsis"), QStringLiteral("Save Show…")},
        {QStringLiteral("save.show_as"), QStringLiteral("Save Show As…")},
        {QStringLiteral("cancel"), QStringLiteral("Cancel")},
        {QStringLiteral("clear"), QStringLiteral("Clear")},
        {QStringLiteral("reset"), QStringLiteral("Reset")},
        {QStringLiteral("back"), QStringLiteral("Back")},
        {QStringLiteral("forward"), QStringLiteral("Forward")},
        {QStringLiteral("settings"), QStringLiteral("Settings")},
        {QStringLiteral("close.document"), QStringLiteral("Close Document")},
        {QStringLiteral("recent"), QStringLiteral("Recents")},
        {QStringLiteral("recent.empty"), QStringLiteral("No recent files")},
        {QStringLiteral("presenter"), QStringLiteral("Presenter")},
        {QStringLiteral("file.none"), QStringLiteral("No file")},
        {QStringLiteral("show.new"), QStringLiteral("New set")},
        {QStringLiteral("show.default_name"), QStringLiteral("Show")},
        {QStringLiteral("slide.none"), QStringLiteral("No slide")},
        {QStringLiteral("set.end"), QStringLiteral("End of set")},
        {QStringLiteral("next"), QStringLiteral("Next")},
        {QStringLiteral("set"), QStringLiteral("Set")},
        {QStringLiteral("bookmarks"), QStringLiteral("Cues")},
        {QStringLiteral("bookmark"), QStringLiteral("Cue")},
        {QStringLiteral("output"), QStringLiteral("Output")},
        {QStringLiteral("tools"), QStringLiteral("Tools")},
        {QStringLiteral("clicker"), QStringLiteral("Clicker")},
        {QStringLiteral("screen"), QStringLiteral("Screen")},
        {QStringLiteral("format"), QStringLiteral("Aspect")},
        {QStringLiteral("fit"), QStringLiteral("Fit")},
        {QStringLiteral("width"), QStringLiteral("Width")},
        {QStringLiteral("height"), QStringLiteral("Height")},
        {QStringLiteral("width_px"), QStringLiteral("Width, px")},
        {QStringLiteral("height_px"), QStringLiteral("Height, px")},
        {QStringLiteral("display"), QStringLiteral("Display")},
        {QStringLiteral("slide_scale"), QStringLiteral("Slide scaling")},
        {QStringLiteral("output.window"), QStringLiteral("Output window")},
        {QStringLiteral("output.show"), QStringLiteral("Show output")},
        {QStringLiteral("output.show_toggle"), QStringLiteral("Show output")},
        {QStringLiteral("output.on_top"), QStringLiteral("Always on top")},
        {QStringLiteral("output.hide_cursor"), QStringLiteral("Hide cursor on output")},
        {QStringLiteral("output.toggle"), QStringLiteral("Show / Hide Output")},
        {QStringLiteral("output.title"), QStringLiteral("Output — PDF Brelvonic")},
        {QStringLiteral("syphon.toggle"), QStringLiteral("Syphon for Resolume")},
        {QStringLiteral("syphon.publish"), QStringLiteral("Publish Syphon")},
        {QStringLiteral("syphon.name"), QStringLiteral("Source name")},
        {QStringLiteral("syphon.frame"), QStringLiteral("Frame")},
        {QStringLiteral("syphon.help"), QStringLiteral("In Resolume: add a clip → Source → Syphon → PDF Brelvonic. You can hide the output window — the signal still runs.")},
        {QStringLiteral("syphon.live"), QStringLiteral("live")},
        {QStringLiteral("syphon.wait"), QStringLiteral("waiting")},
        {QStringLiteral("syphon.status"), QStringLiteral("Source “PDF Brelvonic” · %d×%d · %@")},
        {QStringLiteral("blackout"), QStringLiteral("Blackout")},
        {QStringLiteral("blackout.off"), QStringLiteral("Clear blackout")},
        {QStringLiteral("blackout.label"), QStringLiteral("BLACKOUT")},
        {QStringLiteral("freeze"), QStringLiteral("Freeze output")},
        {QStringLiteral("frozen"), QStringLiteral("Output frozen")},
        {QStringLiteral("laser"), QStringLiteral("Laser")},
        {QStringLiteral("marker"), QStringLiteral("Marker")},
        {QStringLiteral("frame"), QStringLiteral("Frame")},
        {QStringLiteral("zoom"), QStringLiteral("Zoom")},
        {QStringLiteral("pointer"), QStringLiteral("Pointer")},
        {QStringLiteral("undo.stroke"), QStringLiteral("Undo stroke")},
        {QStringLiteral("clear.marks"), QStringLiteral("Clear markup")},
        {QStringLiteral("mark.color"), QStringLiteral("Laser and marker color")},
        {QStringLiteral("clicker.active"), QStringLiteral("Clicker is active")},
        {QStringLiteral("clicker.need_access"), QStringLiteral("To advance slides over Resolume, allow Accessibility access.")},
        {QStringLiteral("clicker.open_settings"), QStringLiteral("Open Settings")},
        {QStringLiteral("clicker.hint"), QStringLiteral("Slide number: digits then Enter. Marker M, frame R, zoom Z.")},
        {QStringLiteral("drop.set"), QStringLiteral("Drop PDFs into the set")},
        {QStringLiteral("playlist.empty"), QStringLiteral("Open a folder or several PDFs — they become one set.")},
        {QStringLiteral("playlist.pages"), QStringLiteral("%d sl.")},
        {QStringLiteral("playlist.pages_cues"), QStringLiteral("%d sl. · %d cues")},
        {QStringLiteral("cues.hint"), QStringLiteral("Names inside the file: intro, chorus, bridge.")},
        {QStringLiteral("bookmark.this"), QStringLiteral("Cue this slide…")},
        {QStringLiteral("bookmark.on_slide"), QStringLiteral("Cue on slide %d")},
        {QStringLiteral("bookmark.on_slide_ellipsis"), QStringLiteral("Cue on slide %d…")},
        {QStringLiteral("bookmark.prompt"), QStringLiteral("Short name: intro, chorus, bridge…")},
        {QStringLiteral("bookmark.placeholder"), QStringLiteral("Chorus")},
        {QStringLiteral("slide.named"), QStringLiteral("Slide %d")},
        {QStringLiteral("slide.of"), QStringLiteral("Slide %d of %d")},
        {QStringLiteral("slide.of_set"), QStringLiteral("Slide %d of %d · set %d/%d")},
        {QStringLiteral("note.title"), QStringLiteral("Slide note")},
        {QStringLiteral("note.only_console"), QStringLiteral("operator only")},
        {QStringLiteral("note.placeholder"), QStringLiteral("Intro, light cue, pause…")},
        {QStringLiteral("timer.pause"), QStringLiteral("Pause timer")},
        {QStringLiteral("timer.resume"), QStringLiteral("Resume timer")},
        {QStringLiteral("timer.left"), QStringLiteral("%@ left")},
        {QStringLiteral("empty.subtitle"), QStringLiteral("Open a PDF, a folder, or a saved show —\nthe whole set is one clicker away.")},
        {QStringLiteral("aspect.fill"), QStringLiteral("Fill screen")},
        {QStringLiteral("aspect.custom"), QStringLiteral("Custom size")},
        {QStringLiteral("fit.contain"), QStringLiteral("Fit")},
        {QStringLiteral("fit.cover"), QStringLiteral("Fill")},
        {QStringLiteral("transition.none"), QStringLiteral("None")},
        {QStringLiteral("transition.fade"), QStringLiteral("Dissolve")},
        {QStringLiteral("transition.section"), QStringLiteral("Transition")},
        {QStringLiteral("transition.between"), QStringLiteral("Between slides")},
        {QStringLiteral("transition.duration"), QStringLiteral("Duration")},
        {QStringLiteral("transition.now"), QStringLiteral("Current")},
        {QStringLiteral("transition.seconds"), QStringLiteral("%.2f s")},
        {QStringLiteral("transition.help"), QStringLiteral("A dissolve smooths the cut in Resolume — no hard jump.")},
        {QStringLiteral("timer.section"), QStringLiteral("Set timer")},
        {QStringLiteral("timer.none"), QStringLiteral("No planned duration")},
        {QStringLiteral("timer.plan"), QStringLiteral("Plan: %d min")},
        {QStringLiteral("timer.help"), QStringLiteral("On the console: clock, elapsed time, and time remaining.")},
        {QStringLiteral("access"), QStringLiteral("Access")},
        {QStringLiteral("status"), QStringLiteral("Status")},
        {QStringLiteral("access.ok"), QStringLiteral("Allowed")},
        {QStringLiteral("access.need"), QStringLiteral("Access needed")},
        {QStringLiteral("access.help"), QStringLiteral("To advance slides while Resolume is focused, add PDF Brelvonic in Accessibility.")},
        {QStringLiteral("access.system"), QStringLiteral("Open System Settings")},
        {QStringLiteral("clicker.keys"), QStringLiteral("Clicker keys")},
        {QStringLiteral("key.next"), QStringLiteral("Next")},
        {QStringLiteral("key.prev"), QStringLiteral("Previous")},
        {QStringLiteral("key.number"), QStringLiteral("Slide number")},
        {QStringLiteral("key.number_hint"), QStringLiteral("12 then Enter")},
        {QStringLiteral("key.tools"), QStringLiteral("Laser / marker / frame / zoom")},
        {QStringLiteral("key.cues"), QStringLiteral("Cues")},
        {QStringLiteral("key.cues_hint"), QStringLiteral("[  ]   ⌘B — new")},
        {QStringLiteral("developer"), QStringLiteral("Developer")},
        {QStringLiteral("studio"), QStringLiteral("Studio")},
        {QStringLiteral("website"), QStringLiteral("Website")},
        {QStringLiteral("open.site"), QStringLiteral("Open website")},
        {QStringLiteral("open.site_web"), QStringLiteral("Visit brelvonic.app")},
        {QStringLiteral("files"), QStringLiteral("Files")},
        {QStringLiteral("files.clear_recents"), QStringLiteral("Clear recent documents")},
        {QStringLiteral("about.app"), QStringLiteral("About PDF Brelvonic")},
        {QStringLiteral("about.title"), QStringLiteral("About")},
        {QStringLiteral("about.tagline"), QStringLiteral("A PDF presenter for the live stage")},
        {QStringLiteral("version"), QStringLiteral("Version %@")},
        {QStringLiteral("menu.show"), QStringLiteral("Show")},
        {QStringLiteral("slide.next"), QStringLiteral("Next Slide")},
        {QStringLiteral("slide.prev"), QStringLiteral("Previous Slide")},
        {QStringLiteral("cue.next"), QStringLiteral("Next Cue")},
        {QStringLiteral("cue.prev"), QStringLiteral("Previous Cue")},
        {QStringLiteral("alert.folder_empty"), QStringLiteral("No PDFs in this folder")},
        {QStringLiteral("alert.nothing_to_save"), QStringLiteral("Nothing to save")},
        {QStringLiteral("alert.nothing_to_save_msg"), QStringLiteral("Open a PDF or folder first.")},
        {QStringLiteral("alert.show_read"), QStringLiteral("Couldn’t read the show")},
        {QStringLiteral("alert.show_corrupt"), QStringLiteral("Damaged show file")},
        {QStringLiteral("alert.show_files_missing"), QStringLiteral("Show files not found")},
        {QStringLiteral("alert.pdf_missing"), QStringLiteral("Some PDFs were not found")},
        {QStringLiteral("alert.show_save"), QStringLiteral("Couldn’t save the show")},
        {QStringLiteral("alert.pdf_open"), QStringLiteral("Couldn’t open PDF")},
        {QStringLiteral("save.set"), QStringLiteral("Save set")},
    };
    return table;
}

QString format(const QString& text, const std::vector<L10n::Arg>& args)
{
    QString out;
    std::size_t next = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c != u'%' || i + 1 >= text.size()) {
            out += c;
            continue;
        }
        const QStringView rest = QStringView(text).mid(i + 1);
        auto arg = [&]() -> const L10n::Arg* { return next < args.size() ? &args[next++] : nullptr; };
        if (rest.startsWith(u'd')) {
            if (auto a = arg())
                out += std::holds_alternative<qint64>(*a) ? QString::number(std::get<qint64>(*a)) : QString();
            i += 1;
        } else if (rest.startsWith(u"@")) {
            if (auto a = arg())
                out += std::holds_alternative<QString>(*a) ? std::get<QString>(*a) : QString();
            i += 1;
        } else if (rest.startsWith(u".2f")) {
            if (auto a = arg())
                out += std::holds_alternative<double>(*a) ? QString::number(std::get<double>(*a), 'f', 2) : QString();
            i += 3;
        } else {
            out += c;
        }
    }
    return out;
}

}

QString L10n::lookup(const QString& key, const std::vector<Arg>* args)
{
    const auto& table = englishTable();
    const auto it = table.constFind(key);
    const QString text = it == table.constEnd() ? key : *it;
    return args ? format(text, *args) : text;
}
