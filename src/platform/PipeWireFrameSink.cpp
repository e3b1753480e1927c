#include "PipeWireFrameSink.h"

#include "platform/PixelConversion.h"

#include <pipewire/pipewire.h>
#include <spa/param/video/format-utils.h>
#include <spa/pod/builder.h>

#include <QMetaObject>

#include <chrono>
#include <cstring>
#include <mutex>

namespace {

constexpr uint64_t nsPerSecond = 1'000'000'000ull;
// How often the service thread checks the connection and the keep-alive.
constexpr uint64_t housekeepingNs = 250'000'000ull;
constexpr double keepAliveSeconds = 1.0;
// The node offers 30 frames a second; changes that come faster (a fade's own
// steps and the live timer together) are sent at that rate, newest first.
constexpr double frameSpacing = 1.0 / 30.0 - 0.002;

double monotonicSeconds()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void initOnce()
{
    static std::once_flag once;
    std::call_once(once, [] { pw_init(nullptr, nullptr); });
}

int bytesPerPixel(spa_video_format format) { return format == SPA_VIDEO_FORMAT_YUY2 ? 2 : 4; }

}

struct PipeWireFrameSink::Loop {
    PipeWireFrameSink* owner = nullptr;
    QByteArray description;
    QByteArray node;

    pw_thread_loop* thread = nullptr;
    pw_context* context = nullptr;
    pw_core* core = nullptr;
    spa_hook coreListener{};
    pw_stream* stream = nullptr;
    spa_hook streamListener{};
    spa_source* frameEvent = nullptr;
    spa_source* timer = nullptr;
    spa_source* pace = nullptr;
    bool paceArmed = false;

    // Handed over from any thread.
    std::mutex mutex;
    QImage pending;

    // Service thread only.
    bool coreLost = false;
    QImage last;  // own copy of the newest frame
    qint64 lastKey = 0;  // identity of the pixels it was copied from
    QSize offered;
    spa_video_format format = SPA_VIDEO_FORMAT_UNKNOWN;
    QSize negotiated;
    bool streaming = false;
    double lastSentAt = 0;
    std::atomic<quint64> sent{0};

    static const pw_core_events coreEvents;
    static const pw_stream_events streamEvents;

    void connect();
    void teardown();
    void makeStream();
    int buildFormats(spa_pod_builder& b, const spa_pod** params, QSize size);
    void takePending();
    void sendLast();
    void fill();
    void housekeeping();
    void onState(pw_stream_state state);
    void onParam(uint32_t id, const spa_pod* param);
};

const pw_core_events PipeWireFrameSink::Loop::coreEvents = [] {
    pw_core_events e{};
    e.version = PW_VERSION_CORE_EVENTS;
    e.error = [](void* data, uint32_t id, int, int res, const char*) {
        // The service went away; the housekeeping tick reconnects.
        if (id == PW_ID_CORE && res == -EPIPE)
            static_cast<Loop*>(data)->coreLost = true;
    };
    return e;
}();

const pw_stream_events PipeWireFrameSink::Loop::streamEvents = [] {
    pw_stream_events e{};
    e.version = PW_VERSION_STREAM_EVENTS;
    e.state_changed = [](void* data, pw_stream_state, pw_stream_state state, const char*) {
        static_cast<Loop*>(data)->onState(state);
    };
    e.param_changed = [](void* data, uint32_t id, const spa_pod* param) {
        static_cast<Loop*>(data)->onParam(id, param);
    };
    // Frames are filled and queued before the cycle is triggered, never in
    // the cycle itself (that would ship each frame one cycle late).
    e.process = [](void*) {};
    return e;
}();

void PipeWireFrameSink::Loop::connect()
{
    if (core)
        return;
    core = pw_context_connect(context, nullptr, 0);
    if (!core)
        return;
    coreLost = false;
    spa_zero(coreListener);
    pw_core_add_listener(core, &coreListener, &coreEvents, this);
    if (!last.isNull())
        makeStream();
}

void PipeWireFrameSink::Loop::teardown()
{
    if (stream) {
        spa_hook_remove(&streamListener);
        pw_stream_destroy(stream);
        stream = nullptr;
    }
    if (core) {
        spa_hook_remove(&coreListener);
        pw_core_disconnect(core);
        core = nullptr;
    }
    streaming = false;
    paceArmed = false;
    format = SPA_VIDEO_FORMAT_UNKNOWN;
    negotiated = QSize();
    offered = QSize();
    owner->setRunning(false);
}

int PipeWireFrameSink::Loop::buildFormats(spa_pod_builder& b, const spa_pod** params, QSize size)
{
    // Each format has one fixed size and rate: camera consumers reject ranges.
    // The order is the order of preference.
    const spa_video_format formats[] = {SPA_VIDEO_FORMAT_BGRA, SPA_VIDEO_FORMAT_BGRx, SPA_VIDEO_FORMAT_YUY2};
    int n = 0;
    for (const spa_video_format f : formats) {
        spa_video_info_raw info{};
        info.format = f;
        info.size = SPA_RECTANGLE(uint32_t(size.width()), uint32_t(size.height()));
        info.framerate = SPA_FRACTION(30, 1);
        if (f == SPA_VIDEO_FORMAT_YUY2) {
            info.color_range = SPA_VIDEO_COLOR_RANGE_16_235;
            info.color_matrix = SPA_VIDEO_COLOR_MATRIX_BT601;
        }
        params[n++] = spa_format_video_raw_build(&b, SPA_PARAM_EnumFormat, &info);
    }
    return n;
}

void PipeWireFrameSink::Loop::makeStream()
{
    pw_properties* props = pw_properties_new(
        PW_KEY_NODE_NAME, node.constData(), PW_KEY_NODE_DESCRIPTION, description.constData(), PW_KEY_MEDIA_NAME,
        description.constData(), "app.name", description.constData(), PW_KEY_MEDIA_CLASS, "Video/Source", PW_KEY_MEDIA_ROLE, "Camera", PW_KEY_MEDIA_TYPE,
        "Video", PW_KEY_MEDIA_CATEGORY, "Capture", PW_KEY_APP_NAME, description.constData(), nullptr);
    stream = pw_stream_new(core, description.constData(), props);
    if (!stream)
        return;
    spa_zero(streamListener);
    pw_stream_add_listener(stream, &streamListener, &streamEvents, this);
    uint8_t storage[2048];
    spa_pod_builder b = SPA_POD_BUILDER_INIT(storage, sizeof storage);
    const spa_pod* params[3];
    offered = last.size();
    const int n = buildFormats(b, params, offered);
    pw_stream_connect(stream, PW_DIRECTION_OUTPUT, PW_ID_ANY,
                      pw_stream_flags(PW_STREAM_FLAG_DRIVER | PW_STREAM_FLAG_MAP_BUFFERS), params, uint32_t(n));
}

void PipeWireFrameSink::Loop::onState(pw_stream_state state)
{
    owner->setRunning(state == PW_STREAM_STATE_PAUSED || state == PW_STREAM_STATE_STREAMING);
    const bool wasStreaming = streaming;
    streaming = state == PW_STREAM_STATE_STREAMING;
    // A consumer just started: it gets the current picture at once.
    if (streaming && !wasStreaming)
        sendLast();
}

void PipeWireFrameSink::Loop::onParam(uint32_t id, const spa_pod* param)
{
    if (id != SPA_PARAM_Format || !param)
        return;
    spa_video_info_raw info{};
    if (spa_format_video_raw_parse(param, &info) < 0)
        return;
    format = info.format;
    negotiated = QSize(int(info.size.width), int(info.size.height));
    const int stride = negotiated.width() * bytesPerPixel(format);
    uint8_t storage[1024];
    spa_pod_builder b = SPA_POD_BUILDER_INIT(storage, sizeof storage);
    // A small pool of shared-memory buffers with unpadded rows, mapped once.
    const spa_pod* buffers = static_cast<const spa_pod*>(spa_pod_builder_add_object(
        &b, SPA_TYPE_OBJECT_ParamBuffers, SPA_PARAM_Buffers, SPA_PARAM_BUFFERS_buffers,
        SPA_POD_CHOICE_RANGE_Int(4, 2, 8), SPA_PARAM_BUFFERS_blocks, SPA_POD_Int(1), SPA_PARAM_BUFFERS_size,
        SPA_POD_Int(stride * negotiated.height()), SPA_PARAM_BUFFERS_stride, SPA_POD_Int(stride),
        SPA_PARAM_BUFFERS_dataType, SPA_POD_CHOICE_FLAGS_Int(1 << SPA_DATA_MemFd)));
    pw_stream_update_params(stream, &buffers, 1);
}

void PipeWireFrameSink::Loop::takePending()
{
    QImage frame;
    {
        std::lock_guard lock(mutex);
        frame = std::move(pending);
        pending = QImage();
    }
    if (frame.isNull())
        return;
    // The same picture handed over again (nothing moved) needs no copy.
    if (frame.cacheKey() == lastKey && !last.isNull()) {
    } else if (last.size() == frame.size() && last.format() == frame.format()
               && last.bytesPerLine() == frame.bytesPerLine()) {
        std::memcpy(last.bits(), frame.constBits(), size_t(frame.sizeInBytes()));
    } else {
        last = frame.copy();
    }
    lastKey = frame.cacheKey();
    // The publisher's buffer is free again before anything else happens.
    frame = QImage();
    if (!core)
        return;
    if (!stream) {
        makeStream();
        return;
    }
    if (last.size() != offered) {
        // Only a new size renegotiates; consumers then take the new format.
        uint8_t storage[2048];
        spa_pod_builder b = SPA_POD_BUILDER_INIT(storage, sizeof storage);
        const spa_pod* params[3];
        offered = last.size();
        const int n = buildFormats(b, params, offered);
        pw_stream_update_params(stream, params, uint32_t(n));
        return;
    }
    sendLast();
}

void PipeWireFrameSink::Loop::sendLast()
{
    const double wait = lastSentAt + frameSpacing - monotonicSeconds();
    if (wait <= 0) {
        fill();
        return;
    }
    if (paceArmed)
        return;
    paceArmed = true;
    timespec value{0, long(wait * 1e9) + 1};
    timespec none{0, 0};
    pw_loop_update_timer(pw_thread_loop_get_loop(thread), pace, &value, &none, false);
}

void PipeWireFrameSink::Loop::fill()
{
    if (!stream || !streaming || last.isNull() || negotiated != last.size() || format == SPA_VIDEO_FORMAT_UNKNOWN)
        return;
    pw_buffer* buffer = pw_stream_dequeue_buffer(stream);
    // No free buffer: the consumer is behind; this frame is dropped.
    if (!buffer)
        return;
    spa_data& d = buffer->buffer->datas[0];
    const int w = last.width();
    const int h = last.height();
    const int stride = w * bytesPerPixel(format);
    if (!d.data || d.maxsize < uint32_t(stride * h)) {
        pw_stream_queue_buffer(stream, buffer);
        return;
    }
    auto* dst = static_cast<uint8_t*>(d.data);
    if (format == SPA_VIDEO_FORMAT_YUY2) {
        PixelConversion::bgraToYuy2(last.constBits(), int(last.bytesPerLine()), dst, stride, w, h);
    } else if (last.bytesPerLine() == stride) {
        std::memcpy(dst, last.constBits(), size_t(stride) * size_t(h));
    } else {
        for (int y = 0; y < h; ++y)
            std::memcpy(dst + std::ptrdiff_t(y) * stride, last.constScanLine(y), size_t(stride));
    }
    d.chunk->offset = 0;
    d.chunk->size = uint32_t(stride * h);
    d.chunk->stride = stride;
    d.chunk->flags = 0;
    pw_stream_queue_buffer(stream, buffer);
    pw_stream_trigger_process(stream);
    lastSentAt = monotonicSeconds();
    ++sent;
}

void PipeWireFrameSink::Loop::housekeeping()
{
    if (coreLost)
        teardown();
    if (!core)
        connect();
    // Consumers that wait for frames (or joined late) never see the source fall silent.
    if (streaming && monotonicSeconds() - lastSentAt >= keepAliveSeconds)
        sendLast();
}

PipeWireFrameSink::PipeWireFrameSink(QObject* parent)
    : QObject(parent)
{
}

PipeWireFrameSink::~PipeWireFrameSink()
{
    stop();
}

QString PipeWireFrameSink::nodeName(const QString& name)
{
    QString out;
    for (const QChar c : name.toLower()) {
        if (c.isLetterOrNumber())
            out += c;
        else if (!out.isEmpty() && !out.endsWith(u'-'))
            out += u'-';
    }
    while (out.endsWith(u'-'))
        out.chop(1);
    return out;
}

bool PipeWireFrameSink::start(const QString& name)
{
    if (loop_)
        return true;
    initOnce();
    auto loop = std::make_unique<Loop>();
    loop->owner = this;
    loop->description = name.toUtf8();
    loop->node = nodeName(name).toUtf8();
    loop->thread = pw_thread_loop_new("brelvonic-video", nullptr);
    if (!loop->thread)
        return false;
    pw_loop* l = pw_thread_loop_get_loop(loop->thread);
    loop->context = pw_context_new(l, nullptr, 0);
    if (!loop->context) {
        pw_thread_loop_destroy(loop->thread);
        return false;
    }
    Loop* raw = loop.get();
    std::lock_guard guard(loopGuard_);
    loop->frameEvent = pw_loop_add_event(
        l, [](void* data, uint64_t) { static_cast<Loop*>(data)->takePending(); }, raw);
    loop->timer = pw_loop_add_timer(
        l, [](void* data, uint64_t) { static_cast<Loop*>(data)->housekeeping(); }, raw);
    loop->pace = pw_loop_add_timer(
        l,
        [](void* data, uint64_t) {
            auto* self = static_cast<Loop*>(data);
            self->paceArmed = false;
            self->fill();
        },
        raw);
    loop_ = std::move(loop);
    pw_thread_loop_lock(raw->thread);
    timespec value{0, long(housekeepingNs)};
    timespec interval{0, long(housekeepingNs)};
    pw_loop_update_timer(l, raw->timer, &value, &interval, false);
    raw->connect();
    pw_thread_loop_unlock(raw->thread);
    pw_thread_loop_start(raw->thread);
    static_assert(housekeepingNs < nsPerSecond);
    return true;
}

void PipeWireFrameSink::publish(const QImage& frame)
{
    std::lock_guard guard(loopGuard_);
    if (!loop_ || frame.isNull())
        return;
    {
        std::lock_guard lock(loop_->mutex);
        loop_->pending = frame;
    }
    pw_loop_signal_event(pw_thread_loop_get_loop(loop_->thread), loop_->frameEvent);
}

void PipeWireFrameSink::stop()
{
    std::lock_guard guard(loopGuard_);
    if (!loop_)
        return;
    Loop* l = loop_.get();
    pw_thread_loop_lock(l->thread);
    l->teardown();
    pw_loop* loop = pw_thread_loop_get_loop(l->thread);
    pw_loop_destroy_source(loop, l->frameEvent);
    pw_loop_destroy_source(loop, l->timer);
    pw_loop_destroy_source(loop, l->pace);
    pw_thread_loop_unlock(l->thread);
    pw_thread_loop_stop(l->thread);
    pw_context_destroy(l->context);
    pw_thread_loop_destroy(l->thread);
    loop_.reset();
}

quint64 PipeWireFrameSink::framesSent() const
{
    std::lock_guard guard(loopGuard_);
    return loop_ ? loop_->sent.load() : 0;
}

void PipeWireFrameSink::setRunning(bool running)
{
    if (running_.exchange(running) == running)
        return;
    QMetaObject::invokeMethod(this, [this] {
        if (handler_)
            handler_();
    }, Qt::QueuedConnection);
}
