#include "output/TavloPresentOutputTargetNodeTransformEncode.h"

#include "base/Log.h"
#include "base/TavloUtil.h"
#include "output/TavloCodecAggregationUtil.h"

#include <QDebug>

#include <algorithm>
#include <pthread.h>
#include <utility>

using namespace tavlo;

namespace {

using Node = TavloPresentOutputTargetNodeTransformEncode;

constexpr quint32 nv12Format = 103;
constexpr int acquireMilliseconds = 10;

void tell(const char* function, const QString& text, std::source_location at = std::source_location::current())
{
    const std::string name = std::string("TavloPresentOutputTargetNodeTransformEncode::") + function;
    logFailure({"impl\\TavloPresentOutputTarget", name.c_str(), at}, text);
}

/// Of an output's targets, those that a recording has.
tagTavloPresentOutputParam recordOnly(tagTavloPresentOutputParam param)
{
    param.recordEnabled = 1;
    param.httpEnabled = param.multicastEnabled = param.hlsEnabled = 0;
    param.rtmp1Enabled = param.rtmp2Enabled = param.pushEnabled = param.push2Enabled = 0;
    param.rtspEnabled = param.peerEnabled = param.ndiEnabled = param.sdpEnabled = param.relayEnabled = 0;
    return param;
}

/// Of an output's targets, those that a stream has.
tagTavloPresentOutputParam netOnly(tagTavloPresentOutputParam param)
{
    param.recordEnabled = param.tsRecordEnabled = 0;
    return param;
}

template <class Encoder>
QByteArray extraDataOf(Encoder& encoder)
{
    const quint8* data = nullptr;
    int size = 0;
    encoder.getExtraData(&data, &size);
    return QByteArray(reinterpret_cast<const char*>(data), data ? size : 0);
}

char frameTypeOf(quint32 flags)
{
    struct Row
    {
        quint32 flag;
        char type;
    };
    constexpr std::array rows{Row{BLOCK_FLAG_TYPE_I, 'I'}, Row{BLOCK_FLAG_TYPE_P, 'P'}, Row{BLOCK_FLAG_TYPE_B, 'B'},
                              Row{BLOCK_FLAG_TYPE_PB, 'C'}};
    const auto* found = std::ranges::find_if(rows, [flags](const Row& row) { return (flags & row.flag) != 0; });
    return found != rows.end() ? found->type : '\0';
}

/// Adds the losses and gains that parts which have ended had counted.
void addCounts(tagTavloOutputStatistics& sum, const tagTavloOutputStatistics& ended)
{
    using Statistics = tagTavloOutputStatistics;
    for (quint64 Statistics::*count :
         {&Statistics::encoderDropped, &Statistics::repeatedPictures, &Statistics::skippedPictures,
          &Statistics::silentSamples, &Statistics::skippedSamples, &Statistics::recordDropped, &Statistics::netDropped,
          &Statistics::recordFiles, &Statistics::netReconnects, &Statistics::recordWritten, &Statistics::netWritten,
          &Statistics::viewerDropped})
        sum.*count += ended.*count;
}

} // namespace

Node::TavloPresentOutputTargetNodeTransformEncode(OutputConversion conversion)
    : TavloPresentOutputTargetNodeProcessMemConvert(nv12Format, tavloFourcc("NV12"), conversion),
      _audioHelper("TavloMpegModule", "CreateTavloMpegAudioEncoderFDK")
{
    _nodes.reserve(TavloPresentOutputTypeCount);
}

Node::~TavloPresentOutputTargetNodeTransformEncode() = default;

void Node::destroy() { TavloPresentOutputTargetNodeProcessMemConvert::destroy(); }

void Node::onThreadEnd()
{
    stopEncode();
    for (int type = 0; type < TavloPresentOutputTypeCount; ++type)
        if (_outputNodes[static_cast<size_t>(type)])
            endAside(type);
    for (int type = 0; type < TavloPresentOutputTypeCount; ++type)
        finishEnd(type);
    TavloPresentOutputTargetNodeProcessMemConvert::onThreadEnd();
}

void Node::onThreadEvent(OutputEvent& event)
{
    switch (event.id) {
    case OutputEventId::StartOutput:
        onHandle_startOutput(event.index, event.type, *event.param);
        break;
    case OutputEventId::StopOutput:
        onHandle_stopOutput(event.index, event.type, event.done);
        break;
    case OutputEventId::LeafEnded:
        onHandle_leafEnded(event.type);
        break;
    default:
        TavloPresentOutputTargetNodeProcessMemConvert::onThreadEvent(event);
    }
}

void Node::onHandle_startOutput(int, int type, const tagTavloPresentOutputParam& param)
{
    auto& place = _outputNodes[static_cast<size_t>(type)];
    if (place)
        return;
    if (Ending& ending = _endings[static_cast<size_t>(type)]; ending.leaf) {
        if (!ending.startAgain) // up to then its file or address is taken
            ending.startAgain = param;
        return;
    }
    if (!_encoding) {
        _encodeParam = param;
        startEncode();
    }
    std::unique_ptr<Leaf> leaf = makeLeaf(type, param);
    if (!leaf) {
        qDebug() << "no support output type : " << type;
        return;
    }
    if (!leaf->create(_index, _name, _videoInfo, _audioInfo, _device, _context, _texture, _textureDesc)) {
        leaf->destroy();
        tell("onHandle_startOutput", QStringLiteral("failed to _outputNodes[type]->create"));
        return;
    }
    const std::unique_lock guard(_nodesLock);
    place = std::move(leaf);
    _nodes.push_back(place.get());
}

std::unique_ptr<Node::Leaf> Node::makeLeaf(int type, tagTavloPresentOutputParam param) const
{
    switch (type) {
    case TavloPresentOutputTypeRecord:
        return std::make_unique<TavloPresentOutputTargetNodeOutputRecord>(recordOnly(std::move(param)), _encodeParam,
                                                                          _videoExtraData, _audioExtraData);
    case TavloPresentOutputTypeNet:
        return std::make_unique<TavloPresentOutputTargetNodeOutputNet>(netOnly(std::move(param)), _encodeParam,
                                                                       _videoExtraData, _audioExtraData);
    default:
        return nullptr;
    }
}

/// The encoders are closed in front of the last leaf, so that it gets what they still hold. \param done  taken over when
/// the end is yet to come
void Node::onHandle_stopOutput(int, int type, std::binary_semaphore*& done)
{
    Ending& ending = _endings[static_cast<size_t>(type)];
    ending.startAgain.reset();
    if (_outputNodes[static_cast<size_t>(type)]) {
        if (_nodes.size() == 1)
            stopEncode();
        endAside(type);
    }
    if (ending.leaf && done)
        ending.waiting.push_back(std::exchange(done, nullptr));
}

void Node::onHandle_leafEnded(int type)
{
    finishEnd(type);
    if (const auto param = std::exchange(_endings[static_cast<size_t>(type)].startAgain, std::nullopt))
        onHandle_startOutput(_index, type, *param);
}

/// From here on the leaf gets no blocks.
void Node::endAside(int type)
{
    Ending& ending = _endings[static_cast<size_t>(type)];
    {
        const std::unique_lock guard(_nodesLock);
        ending.leaf = std::move(_outputNodes[static_cast<size_t>(type)]);
        std::erase(_nodes, ending.leaf.get());
    }
    ending.thread = std::thread([this, type, leaf = ending.leaf.get()] {
        pthread_setname_np(pthread_self(), "tavlo-leaf-end");
        leaf->destroy();
        OutputEvent event;
        event.id = OutputEventId::LeafEnded;
        event.type = type;
        post(std::move(event), false);
    });
}

void Node::finishEnd(int type)
{
    Ending& ending = _endings[static_cast<size_t>(type)];
    if (!ending.leaf)
        return;
    ending.thread.join();
    std::unique_ptr<Leaf> leaf;
    {
        const std::unique_lock guard(_nodesLock);
        keepCounts(*ending.leaf);
        leaf = std::move(ending.leaf);
    }
    leaf.reset();
    for (std::binary_semaphore* const done : std::exchange(ending.waiting, {}))
        done->release();
}

/// Of a part that has ended, so that its figures outlive it. Under _nodesLock, together with the part's end for others.
template <class Part>
void Node::keepCounts(Part& part)
{
    tagTavloOutputStatistics ended;
    part.getStatistics(&ended);
    addCounts(_ended, ended);
}

void Node::startEncode()
{
    _encoding = true;
    preparePool();
    {
        const std::lock_guard guard(_frameTypesLock);
        _frameTypeCount = 0;
    }
    const auto impl = static_cast<TavloVideoEncodeImpl>(_encodeParam.encodeImpl);
    _graphicsContext = TavloCodecAggregationUtil::createGraphicsContext(impl);
    if (!_graphicsContext || !_graphicsContext->create(0, nullptr, 0, 1))
        tell("startEncode", QStringLiteral("failed to create graphics context !!!"));
    if (_graphicsContext)
        _graphicsContext->makeCurrent();
    startVideo();
    startAudio();
    qDebug() << "succeeded to startEncode !!! ";
}

void Node::startVideo()
{
    _videoExtraData.clear();
    auto encoder = TavloCodecAggregationUtil::createEncoder(static_cast<TavloVideoEncodeImpl>(_encodeParam.encodeImpl));
    if (encoder) {
        encoder->init(0, &_videoSink, _graphicsContext.get());
        if (!encoder->open(_videoInfo, _encodeParam, 0)) {
            encoder->close();
            encoder.reset();
        }
    }
    if (!encoder) {
        tell("startEncode", QStringLiteral("failed to create video encoder !!! "));
        return;
    }
    _videoExtraData = extraDataOf(*encoder);
    const std::unique_lock guard(_nodesLock);
    _videoEncoder = std::move(encoder);
    _wantsVideo.store(true);
}

void Node::startAudio()
{
    _audioExtraData.clear();
    bool opened = _audioHelper.create();
    if (opened) {
        _audioHelper->init(0, &_audioSink);
        opened = _audioHelper->open(_audioInfo, _encodeParam);
    }
    if (!opened) {
        tell("startEncode", QStringLiteral("failed to create audio encoder !!!"));
        _audioHelper.destroy();
        return;
    }
    _audioExtraData = extraDataOf(*_audioHelper.get());
    const std::unique_lock guard(_nodesLock);
    _audioEncoder = _audioHelper.get();
    _wantsAudio.store(true);
}

void Node::stopEncode()
{
    if (!std::exchange(_encoding, false))
        return;
    _wantsVideo.store(false);
    _wantsAudio.store(false);
    if (_videoEncoder)
        _videoEncoder->close();
    if (_audioEncoder)
        _audioEncoder->close();
    InterfacePtr<ITavloVideoEncoder> videoEncoder;
    {
        const std::unique_lock guard(_nodesLock);
        if (_videoEncoder)
            keepCounts(*_videoEncoder);
        if (_audioEncoder)
            keepCounts(*_audioEncoder);
        videoEncoder = std::move(_videoEncoder);
        _audioEncoder = nullptr;
    }
    videoEncoder.reset();
    _audioHelper.destroy();
    _graphicsContext.reset();
    qDebug() << "succeeded to stopEncode !!! ";
}

/// The encoder's own picture is filled in place wherever it gives one, and a picture that stands on its head is turned
/// over on the way.
void Node::onHandle_video(picture_t* picture, bool flip)
{
    if (!_videoEncoder)
        return countLate();
    const bool sameChroma = picture->format.i_chroma == _videoInfo.chroma;
    if (!targetPicture() || (!sameChroma && !_converter.isOpen()))
        return countDropped();
    picture_t* const acquired = _videoEncoder->acquirePicture(0, acquireMilliseconds);
    picture_t* const target = acquired ? acquired : targetPicture();
    if (sameChroma)
        TavloUtil::picture_CopyPixels(target, picture, flip);
    else
        _converter.convert(picture, target, flip);
    target->date = picture->date;
    if (acquired)
        _videoEncoder->submitPicture(acquired);
    if (acquired || _videoEncoder->encode(target, 1, picture->date, picture->date))
        _lostByEncoder.good();
    else if (_lostByEncoder.isTold())
        tell("onHandle_video", QStringLiteral("the video encoder has no room"));
}

void Node::onHandle_audio(block_t* block)
{
    if (_audioEncoder)
        _audioEncoder->encode(block->p_buffer, static_cast<int>(block->i_buffer), block->i_pts, block->i_dts);
}

void Node::takeVideo(BlockPtr block)
{
    if (!block)
        return;
    noteFrameType(*block);
    _codedPictures.fetch_add(1, std::memory_order_release);
    handOn(std::move(block), &Leaf::onVideo);
}

void Node::takeAudio(BlockPtr block)
{
    if (block)
        handOn(std::move(block), &Leaf::onAudio);
}

void Node::noteFrameType(const block_t& block)
{
    const std::lock_guard guard(_frameTypesLock);
    if (_frameTypeCount < _frameTypes.size())
        _frameTypes[_frameTypeCount++] = frameTypeOf(block.i_flags);
}

/// Each leaf owns what it is given: the last one the block, the others a copy.
void Node::handOn(BlockPtr block, void (Leaf::*take)(BlockPtr))
{
    const std::shared_lock guard(_nodesLock);
    for (size_t i = 0; i + 1 < _nodes.size(); ++i)
        (_nodes[i]->*take)(BlockPtr(block_Duplicate(block.get())));
    if (!_nodes.empty())
        (_nodes.back()->*take)(std::move(block));
}

void Node::getStatistics(tagTavloOutputStatistics* statistics)
{
    // first, so that those among them that were repeated are told as well
    statistics->codedPictures += _codedPictures.load(std::memory_order_acquire);
    TavloPresentOutputTargetNodeProcessMemConvert::getStatistics(statistics);
    {
        const std::shared_lock guard(_nodesLock);
        for (Leaf* leaf : _nodes)
            leaf->getStatistics(statistics);
        for (const Ending& ending : _endings)
            if (ending.leaf)
                ending.leaf->getStatistics(statistics);
        if (_videoEncoder)
            _videoEncoder->getStatistics(statistics);
        if (_audioEncoder)
            _audioEncoder->getStatistics(statistics);
        addCounts(*statistics, _ended);
    }
    const std::lock_guard guard(_frameTypesLock);
    std::copy_n(_frameTypes.begin(), _frameTypeCount, statistics->frameTypes.begin());
}
