#pragma once

#include "TavloOutputModule/CodedPacket.h"

#include <atomic>
#include <memory>
#include <string>
#include <thread>

using GMainContext = struct _GMainContext;
using GSource = struct _GSource;
using GstRTSPServer = struct _GstRTSPServer;

namespace tavlo {

/// Serves one coded stream to any number of viewers over RTSP, on GStreamer's server and a thread of its own. All of them
/// share one pipeline, which lives while somebody looks.
///
/// Owner's thread, but for the figures.
class RtspServer
{
public:
    /// \param address, port  of this machine  \param path  with a slash in front
    /// \return null, the reason in `error`, when it cannot listen
    static std::unique_ptr<RtspServer> open(const std::string& address, int port, const std::string& path,
                                            const StreamFormat& format, std::string& error);
    ~RtspServer();
    RtspServer(const RtspServer&) = delete;
    RtspServer& operator=(const RtspServer&) = delete;

    void push(const CodedPacket& packet);

    // Any thread.
    quint64 viewers() const;
    quint64 dropped() const; ///< pictures

private:
    class Pipeline;

    RtspServer() = default;

    bool listen(const std::string& address, int port, const std::string& path, const StreamFormat& format,
                std::string& error);

    void run();

    // fixed from open to the end
    std::shared_ptr<Pipeline> _pipeline; ///< what the server's own threads know of this
    GMainContext* _context = nullptr;
    GSource* _listening = nullptr;
    GstRTSPServer* _server = nullptr;
    std::thread _thread;

    std::atomic<bool> _ending{false}; ///< any thread
};

} // namespace tavlo
