#include "TavloOutputModule/RtspServer.h"

#include "shared/Gstreamer.h"

#include <gst/app/gstappsrc.h>
#include <gst/rtsp-server/rtsp-server.h>

#include <atomic>
#include <mutex>
#include <utility>

namespace tavlo {

namespace {

constexpr guint16 firstUdpPort = 61'000, lastUdpPort = 65'535; // above those that the kernel gives to connections
constexpr quint64 mostWaiting = 8 << 20;                       // bytes; what a pipeline that is stuck may keep

GstBuffer* bufferOf(const QByteArray& header, const block_t& block)
{
    const auto headerSize = static_cast<size_t>(header.size());
    GstBuffer* const buffer = gst_buffer_new_allocate(nullptr, headerSize + block.i_buffer, nullptr);
    if (!buffer)
        return nullptr;
    gst_buffer_fill(buffer, 0, header.constData(), headerSize);
    gst_buffer_fill(buffer, headerSize, block.p_buffer, block.i_buffer);
    return buffer;
}

GstCaps* videoCaps(const StreamFormat& format)
{
    return gst_caps_new_simple(format.hevc ? "video/x-h265" : "video/x-h264", "stream-format", G_TYPE_STRING,
                               "byte-stream", "alignment", G_TYPE_STRING, "au", "width", G_TYPE_INT, format.width,
                               "height", G_TYPE_INT, format.height, "framerate", GST_TYPE_FRACTION, format.fpsNum,
                               format.fpsDen, nullptr);
}

GstCaps* audioCaps(const StreamFormat& format)
{
    const auto size = static_cast<size_t>(format.audioExtraData.size());
    GstBuffer* const header = gst_buffer_new_allocate(nullptr, size, nullptr);
    gst_buffer_fill(header, 0, format.audioExtraData.constData(), size);
    GstCaps* const caps =
        gst_caps_new_simple("audio/mpeg", "mpegversion", G_TYPE_INT, 4, "stream-format", G_TYPE_STRING, "raw", "framed",
                            G_TYPE_BOOLEAN, TRUE, "rate", G_TYPE_INT, format.sampleRate, "channels", G_TYPE_INT,
                            format.channels, "codec_data", GST_TYPE_BUFFER, header, nullptr);
    gst_buffer_unref(header);
    return caps;
}

/// The source of that name; null when the pipeline has none.
GstOwned<GstAppSrc> sourceOf(GstElement* element, const char* name, GstCaps* caps)
{
    GstOwned<GstAppSrc> source(reinterpret_cast<GstAppSrc*>(gst_bin_get_by_name_recurse_up(GST_BIN(element), name)));
    if (source)
        gst_app_src_set_caps(source.get(), caps);
    gst_caps_unref(caps);
    return source;
}

std::string launchText(const StreamFormat& format)
{
    const std::string source = "is-live=true format=time block=false ! ";
    std::string text = "(";
    int number = 0;
    if (format.hasVideo())
        text += " appsrc name=video " + source + (format.hevc ? "h265parse ! rtph265pay" : "h264parse ! rtph264pay") +
                " config-interval=-1 pt=96 name=pay" + std::to_string(number++);
    if (format.hasAudio())
        text += " appsrc name=audio " + source + "aacparse ! rtpmp4gpay pt=97 name=pay" + std::to_string(number++);
    return text + " )";
}

/// Has pictures that go over UDP leave from the server's own address, where their viewers answer; otherwise the ports for
/// it would be open on all addresses.
void bindToAddress(GstRTSPMediaFactory* factory, const std::string& address)
{
    const GstOwned<GstRTSPAddressPool> pool(gst_rtsp_address_pool_new());
    if (gst_rtsp_address_pool_add_range(pool.get(), address.c_str(), address.c_str(), firstUdpPort, lastUdpPort, 0))
        gst_rtsp_media_factory_set_address_pool(factory, pool.get());
}

/// Calls `function(instance, shared)` with each signal; the shared object lives as long as the connection.
template <class Shared>
void connectSignal(void* object, const char* signal, GCallback function, const std::shared_ptr<Shared>& shared)
{
    g_signal_connect_data(
        object, signal, function, new std::shared_ptr<Shared>(shared),
        [](gpointer data, GClosure*) { delete static_cast<std::shared_ptr<Shared>*>(data); }, GConnectFlags{});
}

} // namespace

/// What of the server its threads know: they may end behind it.
class RtspServer::Pipeline : public std::enable_shared_from_this<Pipeline>
{
public:
    explicit Pipeline(const StreamFormat& format) : _format(format) {}

    /// A first viewer comes: there is a pipeline. Server's thread.
    void begin(GstRTSPMedia* media);

    /// The last viewer has gone. Any thread.
    void end();

    void push(const CodedPacket& packet);

    // any thread
    std::atomic<quint64> viewers{0}, dropped{0};

private:
    bool begins(const CodedPacket& packet);
    void send(GstAppSrc& source, const CodedPacket& packet);

    const StreamFormat _format;

    // guarded by _lock
    std::mutex _lock;
    GstOwned<GstElement> _element; ///< while there is one
    GstOwned<GstAppSrc> _video, _audio;
    bool _begun = false;    ///< the first key picture is in it
    bool _skipping = false; ///< too much waits: pictures up to the next key picture are left out
    qint64 _offset = 0;     ///< from a packet's time to the pipeline's, microseconds
};

void RtspServer::Pipeline::begin(GstRTSPMedia* media)
{
    const auto gone = [](GstRTSPMedia*, std::shared_ptr<Pipeline>* self) { (*self)->end(); };
    connectSignal(media, "unprepared", G_CALLBACK(+gone), shared_from_this());
    const std::lock_guard guard(_lock);
    _element.reset(gst_rtsp_media_get_element(media));
    _video = _format.hasVideo() ? sourceOf(_element.get(), "video", videoCaps(_format)) : nullptr;
    _audio = _format.hasAudio() ? sourceOf(_element.get(), "audio", audioCaps(_format)) : nullptr;
    _begun = _skipping = false;
}

void RtspServer::Pipeline::end()
{
    const std::lock_guard guard(_lock);
    _video.reset();
    _audio.reset();
    _element.reset();
}

void RtspServer::Pipeline::push(const CodedPacket& packet)
{
    const std::lock_guard guard(_lock);
    GstAppSrc* const source = (packet.video ? _video : _audio).get();
    if (!source || !begins(packet))
        return;
    const bool isFull = gst_app_src_get_current_level_bytes(source) > mostWaiting;
    if (packet.video)
        _skipping = isFull || (_skipping && !packet.key);
    if (!isFull && !(packet.video && _skipping))
        send(*source, packet);
    else if (packet.video)
        dropped.fetch_add(1, std::memory_order_relaxed);
}

/// With the first key picture, whose time becomes the pipeline's own.
bool RtspServer::Pipeline::begins(const CodedPacket& packet)
{
    if (_begun || !_format.canBegin(packet))
        return _begun;
    const GstClockTime now = gst_element_get_current_running_time(_element.get());
    _offset = (GST_CLOCK_TIME_IS_VALID(now) ? static_cast<qint64>(now / 1000) : 0) - packet.dts();
    _begun = true;
    return true;
}

void RtspServer::Pipeline::send(GstAppSrc& source, const CodedPacket& packet)
{
    GstBuffer* const buffer = bufferOf(packet.key ? _format.videoExtraData : QByteArray(), *packet.block);
    if (!buffer)
        return;
    const auto inPipeline = [this](qint64 time) { return static_cast<GstClockTime>(qMax(time + _offset, 0)) * 1000; };
    GST_BUFFER_PTS(buffer) = inPipeline(packet.pts());
    GST_BUFFER_DTS(buffer) = inPipeline(packet.dts());
    GST_BUFFER_DURATION(buffer) = static_cast<GstClockTime>(packet.block->i_length) * 1000;
    if (packet.video && !packet.key)
        GST_BUFFER_FLAG_SET(buffer, GST_BUFFER_FLAG_DELTA_UNIT);
    gst_app_src_push_buffer(&source, buffer); // takes the buffer over
}

std::unique_ptr<RtspServer> RtspServer::open(const std::string& address, int port, const std::string& path,
                                             const StreamFormat& format, std::string& error)
{
    if (!initGstreamer(error))
        return nullptr;
    std::unique_ptr<RtspServer> server(new RtspServer);
    return server->listen(address, port, path, format, error) ? std::move(server) : nullptr;
}

bool RtspServer::listen(const std::string& address, int port, const std::string& path, const StreamFormat& format,
                        std::string& error)
{
    _pipeline = std::make_shared<Pipeline>(format);
    _context = g_main_context_new();
    _server = gst_rtsp_server_new();
    gst_rtsp_server_set_address(_server, address.c_str());
    gst_rtsp_server_set_service(_server, std::to_string(port).c_str());

    using PipelinePtr = std::shared_ptr<Pipeline>;
    GstRTSPMediaFactory* const factory = gst_rtsp_media_factory_new();
    gst_rtsp_media_factory_set_launch(factory, launchText(format).c_str());
    gst_rtsp_media_factory_set_shared(factory, TRUE);
    if (address != "0.0.0.0" && address != "::")
        bindToAddress(factory, address);
    const auto begin = [](GstRTSPMediaFactory*, GstRTSPMedia* media, PipelinePtr* self) { (*self)->begin(media); };
    connectSignal(factory, "media-configure", G_CALLBACK(+begin), _pipeline);
    const auto come = [](GstRTSPServer*, GstRTSPClient* client, PipelinePtr* self) {
        (*self)->viewers.fetch_add(1);
        const auto go = [](GstRTSPClient*, PipelinePtr* pipeline) { (*pipeline)->viewers.fetch_sub(1); };
        connectSignal(client, "closed", G_CALLBACK(+go), *self);
    };
    connectSignal(_server, "client-connected", G_CALLBACK(+come), _pipeline);
    GstRTSPMountPoints* const places = gst_rtsp_server_get_mount_points(_server);
    gst_rtsp_mount_points_add_factory(places, path.c_str(), factory); // takes the factory over
    g_object_unref(places);

    GError* failure = nullptr;
    _listening = gst_rtsp_server_create_source(_server, nullptr, &failure);
    if (!_listening) {
        error = takeGstError(failure, "cannot listen");
        return false;
    }
    const auto accept = [](GSocket* socket, GIOCondition condition, gpointer server) {
        return gst_rtsp_server_io_func(socket, condition, GST_RTSP_SERVER(server));
    };
    g_source_set_callback(_listening, G_SOURCE_FUNC(+accept), g_object_ref(_server), g_object_unref);
    g_source_attach(_listening, _context);
    _thread = std::thread([this] { run(); });
    return true;
}

/// Besides what comes in, sessions are ended whose viewers are gone without a word.
void RtspServer::run()
{
    GSource* const cleaning = g_timeout_source_new_seconds(10);
    const auto clean = [](gpointer server) -> gboolean {
        GstRTSPSessionPool* const sessions = gst_rtsp_server_get_session_pool(GST_RTSP_SERVER(server));
        gst_rtsp_session_pool_cleanup(sessions);
        g_object_unref(sessions);
        return G_SOURCE_CONTINUE;
    };
    g_source_set_callback(cleaning, +clean, _server, nullptr);
    g_source_attach(cleaning, _context);
    while (!_ending)
        g_main_context_iteration(_context, TRUE);
    g_source_destroy(cleaning);
    g_source_unref(cleaning);
}

RtspServer::~RtspServer()
{
    if (_thread.joinable()) {
        g_source_destroy(_listening);
        const auto remove = [](GstRTSPServer*, GstRTSPClient*, gpointer) { return GST_RTSP_FILTER_REMOVE; };
        gst_rtsp_server_client_filter(_server, +remove, nullptr);
        _ending = true;
        g_main_context_wakeup(_context);
        _thread.join();
    }
    _pipeline->end();
    if (_listening)
        g_source_unref(_listening);
    g_object_unref(_server);
    g_main_context_unref(_context);
}

void RtspServer::push(const CodedPacket& packet) { _pipeline->push(packet); }

quint64 RtspServer::viewers() const { return _pipeline->viewers.load(std::memory_order_relaxed); }

quint64 RtspServer::dropped() const { return _pipeline->dropped.load(std::memory_order_relaxed); }

} // namespace tavlo
