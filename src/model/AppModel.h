#pragma once

#include "input/ClickerDevice.h"
#include "l10n/AppLanguage.h"
#include "model/Observation.h"
#include "model/PlaylistEntry.h"
#include "model/OutputTypes.h"
#include "platform/PdfEngine.h"
#include "platform/PlatformServices.h"
#include "platform/Scheduler.h"
#include "model/AnnotationTypes.h"

#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <vector>

struct SavedShowItem;
struct ShowSettings;

// The one presentation model. Lives on the main thread; every view, output and
// input reads it and calls its operations. Each stored property is an
// `obs::Observed` value: read with `prop()`, assign with `prop.set(v)` (equal
// values do nothing), change in place with `prop.mutate(f)` (always notifies).
//
// Operations are implemented in the folder of their subsystem.
class AppModel {
public:
    explicit AppModel(PlatformServices services);
    ~AppModel();
    AppModel(const AppModel&) = delete;
    AppModel& operator=(const AppModel&) = delete;

    // The program's instance, created on first use with the real platform
    // layers. Tests build their own instances instead.
    static AppModel& shared();

    // Start-up sequence, run once when the application has launched
    // (src/model/AppModel.cpp).
    void start();

    // ---- Stored properties, in declaration order ----
    obs::Observed<PdfDocumentPtr> document;
    obs::Observed<std::optional<QString>> documentURL;
    obs::Observed<int> pageIndex{0};
    obs::Observed<int> pageCount{0};
    obs::Observed<std::map<int, ImagePtr>> thumbnails;
    obs::Observed<std::vector<OutputDisplay>> displays;
    obs::Observed<std::optional<uint32_t>> selectedDisplayID;
    obs::Observed<AspectMode> aspect{AspectMode::fillDisplay};
    obs::Observed<ContentFit> contentFit{ContentFit::contain};
    obs::Observed<int> customWidth{1920};
    obs::Observed<int> customHeight{1080};
    obs::Observed<bool> isBlackout{false};
    obs::Observed<bool> isFrozen{false};
    obs::Observed<int> frozenPageIndex{0};
    obs::Observed<bool> isOutputVisible{false};
    obs::Observed<bool> outputAlwaysOnTop{true};
    obs::Observed<std::optional<QPointF>> laserPoint;
    obs::Observed<bool> clickerTrusted{false};
    obs::Observed<QSizeF> outputPixelSize{QSizeF(0, 0)};
    obs::Observed<bool> isSyphonEnabled{true};
    obs::Observed<bool> isSyphonPublishing{false};
    obs::Observed<QSizeF> syphonFrameSize{QSizeF(0, 0)};
    obs::Observed<QStringList> recentFiles;
    obs::Observed<std::vector<PlaylistEntry>> playlist;
    obs::Observed<int> playlistIndex{0};
    obs::Observed<TransitionStyle> transitionStyle{TransitionStyle::fade};
    obs::Observed<double> transitionDuration{0.45};
    obs::Observed<double> transitionProgress{1.0};
    obs::Observed<ImagePtr> outgoingSlideImage;
    obs::Observed<ImagePtr> incomingSlideImage;
    obs::Observed<ImagePtr> previewSlideImage;
    obs::Observed<bool> hideOutputCursor{true};
    // Every assignment, equal or not, also writes the preference.
    obs::Observed<AppLanguage> interfaceLanguage;
    obs::Observed<std::optional<double>> timerStartedAt;  // seconds since the epoch
    obs::Observed<double> timerAccumulated{0};
    obs::Observed<bool> isTimerRunning{false};
    obs::Observed<double> plannedDuration{0};
    obs::Observed<QString> jumpBuffer;
    obs::Observed<StageTool> stageTool{StageTool::pointer};
    obs::Observed<double> zoomScale{2.2};
    obs::Observed<std::optional<QPointF>> zoomCenter;
    obs::Observed<std::map<QString, std::vector<Stroke>>> strokesByPage;
    obs::Observed<std::map<QString, std::vector<FrameRect>>> framesByPage;
    obs::Observed<std::optional<Stroke>> draftStroke;
    obs::Observed<std::optional<QRectF>> draftFrameRect;
    obs::Observed<MarkColor> markColor;
    obs::Observed<std::vector<AnnotationUndo>> annotationUndo;
    obs::Observed<std::optional<QString>> showFileURL;
    // Input devices heard by the clicker sources outside the program, in the
    // order the sources found them (src/input/ClickerDevices.cpp).
    obs::Observed<std::vector<ClickerDevice>> clickerDevices;

    // ---- Titles (src/model/AppModel.cpp) ----
    QString fileTitle() const;
    QString showTitle() const;

    // ---- Set and document cache (src/model/Playlist.cpp) ----
    std::optional<PlaylistEntry> currentEntry() const;
    QString pageKey() const;
    int globalPageIndex() const;
    // `error`, when given, receives why a file could not be opened.
    PdfDocumentPtr cachedDocument(const QString& url, PdfOpenError* error = nullptr);
    std::optional<PlaylistEntry> makeEntry(const QString& url);
    void replacePlaylist(const QStringList& urls);
    void appendToPlaylist(const QStringList& urls);
    void movePlaylist(const std::vector<int>& sourceIndices, int destination);
    void selectPlaylistItem(const QUuid& id);
    void removePlaylistItem(const QUuid& id);
    void closeDocument();

    // ---- Navigation, jump entry, freeze and blackout (src/model/Navigation.cpp) ----
    bool canGoNext() const;
    bool canGoPrevious() const;
    int outputPageIndex() const;
    std::optional<PdfPage> upcomingPage();
    std::optional<QString> upcomingLabel() const;
    void goToNextSlide();
    void goToPreviousSlide();
    void goToPage(int index);
    void toggleFreeze();
    void appendJumpDigit(const QString& digit);
    // Blackout on or off (always notifies, like every toggle in place).
    void toggleBlackout();
    void clearJumpBuffer();
    // The last typed digit taken back; nothing when the buffer is empty.
    void removeLastJumpDigit();
    void commitJump();

    // ---- Slide pictures from the engine's workers (src/model/SlidePictures.cpp) ----
    // True while a move waits for its slide to be rendered; meanwhile the
    // output keeps the picture it has and the stage may show the thumbnail.
    bool isAwaitingSlide() const;

    // ---- Show timer (src/model/ShowTimer.cpp) ----
    void toggleTimer();
    void resetTimer();
    double timerElapsed() const;
    std::optional<double> timerRemaining() const;
    // Seconds; persisted at once.
    void setPlannedDuration(double seconds);

    // ---- Output geometry and frame state (src/output/OutputGeometry.cpp) ----
    void refreshDisplays();
    // Where the output window sits on a screen of frame `screen` (points).
    QRectF outputFrame(const QRectF& screen) const;
    PixelSize syphonPixelSize() const;
    QSizeF snapshotSize() const;
    std::optional<OutputDisplay> preferredOutputDisplay() const;
    std::optional<OutputDisplay> selectedDisplay() const;
    OutputFrameState outputFrameState() const;
    OutputFrameState stagePreviewState() const;
    bool needsLiveOutput() const;
    // Output choices from the console and the settings: each takes the value
    // and persists the preferences (the output window follows on its own).
    void setAspect(AspectMode mode);
    void setContentFit(ContentFit fit);
    // Custom output size in pixels; values below 1 are ignored.
    void setCustomSize(int width, int height);
    // A display that is not connected is ignored.
    void selectDisplay(uint32_t id);
    void setOutputAlwaysOnTop(bool onTop);
    void setHideOutputCursor(bool hide);

    // ---- Output window (src/output/OutputWindowController.cpp) ----
    // The show/hide output command: toggles `isOutputVisible`, then syncs.
    void toggleOutputVisible();
    // Brings the output window in line with the model (no-op without a controller).
    void syncOutput();
    // The controller of the output window; null when the platform made none.
    OutputWindowController* outputController() const { return output_.get(); }

    // ---- Video source (src/output/FramePublisher.cpp) ----
    void setSyphonEnabled(bool enabled);
    // The publisher, where one could be made (the output window takes its
    // frames from it).
    FramePublisher* framePublisher() const { return syphonOutput_.get(); }

    // ---- Clicker (src/input/ClickerMonitor.cpp) ----
    void refreshClickerTrust();
    void promptClickerAccess();
    void keepAliveForClicker();
    // The operator's own keyboard can be left out: an ignored device is not
    // heard outside the program. Stored as a preference by device id.
    void setClickerDeviceIgnored(const QString& id, bool ignored);
    bool isClickerDeviceIgnored(const QString& id) const;
    QStringList ignoredClickerDeviceIDs() const;

    // ---- Transitions (src/output/Transitions.cpp) ----
    // Quadratic ease-in-out of a fade's linear progress 0…1.
    static double transitionEase(double u);
    // The operator's transition settings, persisted at once.
    void setTransitionStyle(TransitionStyle style);
    void setTransitionDuration(double seconds);

    // ---- Preferences (src/model/Preferences.cpp) ----
    // Writes every preference from the current properties.
    void persistPreferences();
    // The language picker: switches every window at once and persists.
    void setInterfaceLanguage(AppLanguage language);
    // The settings a show carries, as they stand, coded (all present).
    ShowSettings showSettings() const;
    // Takes every usable value of `settings`: a known raw value, a size of 1
    // or more, a fade longer than 0, a colour with its red. The others keep
    // their current values; an unusable planned duration is none (0).
    void applyShowSettings(const ShowSettings& settings);
    // Empties the desktop's recent-documents list of this program, then
    // `recentFiles`.
    void clearRecentFiles();

    // ---- Show files (src/show/ShowFiles.cpp) ----
    // True for a path whose extension is "brelvonic" in any case.
    static bool isShowFile(const QString& path);
    void presentSaveShowPanel(bool saveAs);
    void saveShow(const QString& path);
    // The path a show stores for `file`: relative below the show's folder, else absolute.
    static QString portablePath(const QString& file, const QString& showPath);
    void presentOpenShowPanel();
    void openShow(const QString& path);
    // A readable PDF for the item, or none.
    static std::optional<QString> resolveShowItem(const SavedShowItem& item, const QString& showPath);
    // ---- Cues and notes (src/show/Cues.cpp) ----
    void addBookmark(const QString& name, std::optional<int> page = std::nullopt);
    void removeBookmark(const QUuid& id);
    void promptAddBookmark();
    std::vector<CueBookmark> currentCues() const;
    void goToNextCue();
    void goToPreviousCue();
    void setCurrentNote(const QString& text);
    QString currentNote() const;
    // ---- Document intake (src/show/DocumentIntake.cpp) ----
    void presentOpenPanel();
    void presentFolderPanel();
    void presentAddToPlaylistPanel();
    // The PDFs directly inside `folder` (hidden files skipped), in natural
    // order: "Slide 2" before "Slide 10". Empty when it cannot be listed.
    static QStringList pdfs(const QString& folder);
    // Files dropped, given on the command line or handed over by another
    // launch: a show file wins, folders give their PDFs, and a set that is
    // already loaded grows instead of being replaced.
    void ingestDroppedURLs(const QStringList& paths);
    // A file chosen from the recent files: a show opens as a show, anything
    // else becomes a set of that one file.
    void openRecentFile(const QString& path);

    // ---- Stage annotation (src/stage/Annotations.cpp, src/stage/CanvasInteraction.cpp) ----
    void undoAnnotation();
    void clearAnnotations();
    // Palette choice from the console: sets the colour and persists it.
    void chooseMarkColor(const MarkColor& color);
    void setTool(StageTool tool);
    // Back to the pointer with no laser dot and no zoom (Escape).
    void returnToPointer();
    // One pointer sample, normalised to the slide; `ended` marks the last one.
    void handleCanvasPoint(QPointF point, bool ended);
    void nudgeZoom(double delta);
    // A pinch under the zoom tool; `magnification` is the running factor.
    void pinchZoom(double magnification);
    // The console's zoom slider: the scale, clamped into the zoom range.
    void setZoomScale(double scale);

    // ---- Platform layers, for the subsystems that need them ----
    const PlatformServices& services() const { return services_; }

private:
    // Set and document cache (src/model/Playlist.cpp)
    void loadCurrentEntry(int page, bool animate);
    void rebuildThumbnails();
    // Thumbnails rendered on workers, stored in page order.
    struct ThumbnailPass;
    void askThumbnails(const std::shared_ptr<ThumbnailPass>& pass);
    void storeThumbnails(const std::shared_ptr<ThumbnailPass>& pass);
    void stopThumbnails();
    void ensureTimerStarted();  // src/model/ShowTimer.cpp
    void noteRecentDocuments(const QStringList& urls);
    // Navigation (src/model/Navigation.cpp)
    std::optional<PdfPage> outgoingPage() const;
    // `entryLoaded`: the move went into another file, whose load asked for the page.
    void finishPageMove(const std::optional<PdfPage>& outgoing, bool entryLoaded = false);
    // Slide pictures (src/model/SlidePictures.cpp; applyOutputPicture in src/output/Transitions.cpp)
    // How the output takes a new picture: in place (a move into another file
    // while frozen), with a cut, or with a fade.
    enum class OutputMove { replace, cut, fade };
    QSize slideBox() const;
    // The stage shows `page` (the current one) as soon as its picture is
    // rendered, its thumbnail meanwhile.
    void showOnStage(const PdfPage& page);
    // The output moves to the current page once its picture is rendered: a
    // fade from `from`, a cut, or in place.
    void showOnOutput(OutputMove move, ImagePtr from);
    void applyOutputPicture(ImagePtr picture, OutputMove move, ImagePtr from);
    // One render per page however many wait for it; tickets nobody waits
    // for any more are cancelled.
    void askForSlide(const PdfPage& page);
    void slideArrived(const PdfPage& page, ImagePtr picture);
    void dropUnwantedSlides();
    // The picture the output shows of `page` now, for a fade out of it.
    ImagePtr pictureLeaving(const std::optional<PdfPage>& page) const;
    // Renders ahead what the operator may ask for next, and tells each file
    // whether it is near.
    void renderAround();
    void stopSlideWork();
    // Preferences (src/model/Preferences.cpp)
    void restorePreferences();
    // Transitions (src/output/Transitions.cpp)
    // Shows the current page on the output: a fade from `previous` or a cut.
    void startTransition(const std::optional<PdfPage>& previous);
    // The cut: any fade ends, the outgoing picture goes, progress is 1.
    void endTransition();
    void runFadeStep(std::weak_ptr<AppModel*> model, Task task, double start, double duration);
    // Stage annotation (src/stage/Annotations.cpp)
    void pushUndo(AnnotationUndo record);

    PlatformServices services_;
    // Every interface-text lookup reads the language through this, so any
    // view that shows a text is told of a language switch.
    std::shared_ptr<const std::function<void()>> languageRead_ =
        std::make_shared<const std::function<void()>>([this] { (void)interfaceLanguage(); });
    // Handed to tasks so they can tell whether the model still exists.
    std::shared_ptr<AppModel*> self_;

    obs::Observed<std::map<QString, PdfDocumentPtr>> documentCache;
    obs::Observed<Task> transitionTask;
    obs::Observed<std::shared_ptr<void>> presentationActivity;
    obs::Observed<bool> screenObserver{false};
    obs::Observed<Task> thumbnailTask;
    // The services this model owns, made by the platform services' factories
    // (absent where a factory gives none). They hold the model weakly.
    std::unique_ptr<ClickerMonitor> clicker_;

    std::unique_ptr<OutputWindowController> output_;

    std::unique_ptr<FramePublisher> syphonOutput_;

    // What the stage and the output wait for, the renders in flight for them,
    // ahead and for the thumbnails.
    struct OutputWait {
        PdfPage page;
        OutputMove move;
        ImagePtr from;
    };
    std::optional<PdfPage> stageWaitsFor_;
    std::optional<OutputWait> outputWaitsFor_;
    std::vector<std::pair<PdfPage, RenderTicketPtr>> slideTickets_;
    // A render asked for ahead; kept while it runs, so asking for the same
    // page again after the next press does not ask the engine twice.
    struct AheadRender {
        PdfPage page;
        RenderUrgency urgency;
        RenderTicketPtr ticket;
        std::shared_ptr<bool> finished;
    };
    std::vector<AheadRender> aheadTickets_;
    std::shared_ptr<ThumbnailPass> thumbnailPass_;
};
