#pragma once

#include <tavlo/IUnknownEx.h>
#include <tavlo/records/OutputRecords.h>

#include <QByteArray>

struct block_t;
struct tagTavloAudioInfo;
struct tagTavloOutputStatistics;
struct tagTavloVideoInfo;

/// Hears of a worker. Any thread, at any time from `init` to the worker's end.
class ITavloOutputWorkerSink : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0xa7f31d08, 0x4b6e, 0x4195, 0x9c, 0xe3, 0x2f,
                                                  0x80,       0x56,   0xd4,   0x1b, 0x6a};

    virtual void onWorkerEvent(quint32 event) = 0;
    virtual qint32 onWorkerRequest(quint32 request) = 0;
    virtual void onWorkerEnd() = 0;

protected:
    ~ITavloOutputWorkerSink() = default;
};

/// Writes coded pictures and sound to everything that an output's settings enable: files and streams. Made by
/// `CreateTavloOutputWorker`.
///
/// Each target has a thread and a bounded queue of its own: one that is stuck loses its own data and holds up nobody.
class ITavloOutputWorker : public IUnknownEx
{
public:
    static constexpr TavloInterfaceId interfaceId{0x54c2e9b1, 0xf07a, 0x4d6c, 0x88, 0x35, 0x9b,
                                                  0xd6,       0x1e,   0x47,   0xa0, 0xc3};

    static constexpr quint32 recordSelector = 0xffff0001; ///< of `getStatistics`
    static constexpr quint32 netSelector = 0xffff0002;

    /// Before `start`. \param sink  lent until the worker's end
    virtual void init(quint32 reserved, void* reserved2, ITavloOutputWorkerSink* sink, quint32 mode) = 0;

    /// Begins with every target that is enabled. False, with a log line, when nothing of it can ever run. Owner's
    /// thread.
    /// \param encodeParam     its first part tells how the streams are coded
    /// \param outputParam     its second part tells where they go
    /// \param videoExtraData  the codec's header; empty: there are no pictures
    /// \param audioExtraData  the same of the sound
    virtual bool start(const tagTavloVideoInfo& videoInfo, const tagTavloAudioInfo& audioInfo,
                       const tagTavloPresentOutputParam& encodeParam, const tagTavloPresentOutputParam& outputParam,
                       const QByteArray& videoExtraData, const QByteArray& audioExtraData) = 0;

    /// Writes what is on its way, closes every target and ends. Owner's thread.
    virtual void stop() = 0;

    /// Takes over a coded block; never waits. Any thread; the blocks of one kind in order of their dts.
    virtual void writeVideo(block_t* block) = 0;
    virtual void writeAudio(block_t* block) = 0;

    /// For a kind of data that nobody sends yet.
    virtual void writeData(block_t* block) = 0;

    /// Adds the worker's figures. Any thread. \param selector  whose they are
    virtual void getStatistics(tagTavloOutputStatistics* statistics, quint32 selector) = 0;

protected:
    ~ITavloOutputWorker() = default;
};
