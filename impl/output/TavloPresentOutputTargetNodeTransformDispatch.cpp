#include "output/TavloPresentOutputTargetNodeTransformDispatch.h"

#include "base/Log.h"
#include "base/TavloUtil.h"

#include <QDebug>

#include <utility>

using namespace tavlo;

namespace {

using Node = TavloPresentOutputTargetNodeTransformDispatch;

constexpr quint32 yuy2Format = 107;
constexpr quint32 uyvy = tavloFourcc("UYVY");

bool isProjection(int type) { return type >= TavloPresentOutputTypeHDMI0; }

std::unique_ptr<TavloPresentOutputTargetNodeOutputRaw> makeLeaf(int type, const tagTavloPresentOutputParam& param)
{
    if (isProjection(type))
        return std::make_unique<TavloPresentOutputTargetNodeOutputRawHDMI>(param, type - TavloPresentOutputTypeHDMI0);
    if (type == TavloPresentOutputTypeNDI)
        return std::make_unique<TavloPresentOutputTargetNodeOutputRawNDI>(param);
    if (type == TavloPresentOutputTypeDecklink)
        return std::make_unique<TavloPresentOutputTargetNodeOutputRawDecklink>(param);
    return nullptr;
}

} // namespace

Node::TavloPresentOutputTargetNodeTransformDispatch(OutputConversion conversion)
    : TavloPresentOutputTargetNodeProcessMemConvert(yuy2Format, uyvy, conversion)
{}

Node::~TavloPresentOutputTargetNodeTransformDispatch() = default;

void Node::onThreadEvent(OutputEvent& event)
{
    switch (event.id) {
    case OutputEventId::StartOutput:
        onHandle_startOutput(event.index, event.type, *event.param);
        break;
    case OutputEventId::StopOutput:
        removeLeaf(event.type);
        break;
    default:
        TavloPresentOutputTargetNodeProcessMemConvert::onThreadEvent(event);
    }
}

void Node::onThreadEnd()
{
    for (int type = 0; type < TavloPresentOutputTypeCount; ++type)
        removeLeaf(type);
    TavloPresentOutputTargetNodeProcessMemConvert::onThreadEnd();
}

void Node::onHandle_startOutput(int, int type, const tagTavloPresentOutputParam& param)
{
    removeLeaf(type);
    std::unique_ptr<Leaf> leaf = makeLeaf(type, param);
    if (!leaf) {
        qDebug() << "no support output type : " << type;
        return;
    }
    preparePool();
    if (!leaf->create(_index, _name, _videoInfo, _audioInfo, _device, _context, _texture, _textureDesc)) {
        leaf->destroy();
        logFailure(
            {"impl\\TavloPresentOutputTarget", "TavloPresentOutputTargetNodeTransformDispatch::onHandle_startOutput"},
            QStringLiteral("failed to _outputNodes[type]->create"));
        return;
    }
    const std::unique_lock guard(_nodesLock);
    (isProjection(type) ? _hdmiNodes : _rawNodes).push_back(leaf.get());
    _outputNodes[static_cast<size_t>(type)] = std::move(leaf);
    _leafCount.fetch_add(1);
}

void Node::removeLeaf(int type)
{
    std::unique_ptr<Leaf> leaf;
    {
        const std::unique_lock guard(_nodesLock);
        leaf = std::move(_outputNodes[static_cast<size_t>(type)]);
        std::erase(_hdmiNodes, leaf.get());
        std::erase(_rawNodes, leaf.get());
    }
    if (!leaf)
        return;
    _leafCount.fetch_sub(1);
    leaf->destroy();
}

void Node::onHandle_video(picture_t* picture, bool flip)
{
    const std::shared_lock guard(_nodesLock);
    if (_hdmiNodes.empty() && _rawNodes.empty())
        return countLate();
    int stride = 0;
    const quint8* const data = _rawNodes.empty() ? nullptr : asUyvy(picture, flip, stride);
    if (!data && !_rawNodes.empty())
        countDropped();
    else
        _handedOnPictures.fetch_add(1, std::memory_order_release);
    for (Leaf* leaf : _hdmiNodes)
        leaf->onVideo(picture, picture->p[0].p_pixels, picture->p[0].i_pitch, picture->date);
    for (Leaf* leaf : _rawNodes)
        if (data)
            leaf->onVideo(nullptr, data, stride, picture->date);
}

const quint8* Node::asUyvy(picture_t* picture, bool flip, int& stride)
{
    const bool isUyvy = picture->format.i_chroma == uyvy;
    const picture_t* const result = isUyvy && !flip ? picture : targetPicture();
    if (!result || (!isUyvy && !_converter.isOpen()))
        return nullptr;
    if (!isUyvy)
        _converter.convert(picture, targetPicture(), flip);
    else if (flip)
        TavloUtil::picture_CopyPixels(targetPicture(), picture, true);
    stride = result->p[0].i_pitch;
    return result->p[0].p_pixels;
}

void Node::onHandle_audio(block_t* block)
{
    const std::shared_lock guard(_nodesLock);
    for (Leaf* leaf : _hdmiNodes)
        leaf->onAudio(block);
    for (Leaf* leaf : _rawNodes)
        leaf->onAudio(block);
}

void Node::getStatistics(tagTavloOutputStatistics* statistics)
{
    const quint64 handedOn = _handedOnPictures.load(std::memory_order_acquire); // first: each was committed before
    TavloPresentOutputTargetNodeProcessMemConvert::getStatistics(statistics);
    statistics->committedPictures -= handedOn; // the accounts are those of pictures that are coded
    const std::shared_lock guard(_nodesLock);
    for (Leaf* leaf : _hdmiNodes)
        leaf->getStatistics(statistics);
    for (Leaf* leaf : _rawNodes)
        leaf->getStatistics(statistics);
}
