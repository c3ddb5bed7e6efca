#include "output/TavloPresentOutputTarget.h"

#include "base/Log.h"
#include "output/TavloPresentOutputTargetNodeTransformDispatch.h"
#include "output/TavloPresentOutputTargetNodeTransformEncode.h"

#include <QDebug>

#include <utility>

using namespace tavlo;
using namespace tavlo::graphics;

namespace {

enum Column : size_t
{
    Encode = 1,
    Dispatch = 2,
};

} // namespace

TavloPresentOutputTarget::TavloPresentOutputTarget(OutputConversion conversion) : _conversion(conversion) {}

TavloPresentOutputTarget::~TavloPresentOutputTarget() { TavloPresentOutputTarget::destroy(); }

template <class Function>
void TavloPresentOutputTarget::forEachNode(Function function)
{
    for (auto& row : _midNodes)
        for (auto& node : row)
            if (node)
                function(node);
}

bool TavloPresentOutputTarget::create(int index, const QString& name, const tagTavloVideoInfo& videoInfo,
                                      const tagTavloAudioInfo& audioInfo, DevicePtr device, ContextPtr context,
                                      TexturePtr texture, const TextureDesc& textureDesc)
{
    destroy();
    if (!TavloPresentOutputTargetNodeBase::create(index, name, videoInfo, audioInfo, std::move(device),
                                                  std::move(context), std::move(texture), textureDesc))
        return false;
    for (auto& row : _midNodes) {
        row[Encode] = std::make_unique<TavloPresentOutputTargetNodeTransformEncode>(_conversion);
        row[Dispatch] = std::make_unique<TavloPresentOutputTargetNodeTransformDispatch>(_conversion);
    }
    forEachNode([&](std::unique_ptr<MidNode>& node) {
        if (node->create(index, name, videoInfo, audioInfo, _device, _context, _texture, textureDesc))
            return;
        node->destroy();
        node.reset();
        logFailure({"impl\\TavloPresentOutputTarget", "TavloPresentOutputTarget::create"},
                   QStringLiteral("failed to _midNodes[oj][i]->create"));
    });
    return true;
}

void TavloPresentOutputTarget::destroy()
{
    forEachNode([](std::unique_ptr<MidNode>& node) { node->end(); }); // all of them first: they end side by side
    forEachNode([](std::unique_ptr<MidNode>& node) {
        node->destroy();
        node.reset();
    });
    TavloPresentOutputTargetNodeBase::destroy();
}

void TavloPresentOutputTarget::commitVideoData(picture_t* picture)
{
    forEachNode([&](std::unique_ptr<MidNode>& node) { node->commitVideoData(picture); });
}

void TavloPresentOutputTarget::commitVideoData(const TexturePtr& texture, qint64 timestamp)
{
    forEachNode([&](std::unique_ptr<MidNode>& node) { node->commitVideoData(texture, timestamp); });
}

void TavloPresentOutputTarget::commitAudioData(const void* data, int size, qint64 timestamp)
{
    forEachNode([&](std::unique_ptr<MidNode>& node) { node->commitAudioData(data, size, timestamp); });
}

TavloPresentOutputTarget::MidNode* TavloPresentOutputTarget::receiver(const QVariant& index, const QVariant& type,
                                                                      bool tell)
{
    const quint32 row = index.toUInt();
    const quint32 kind = type.toUInt();
    if (row >= TavloPresentOutputIndexCount || kind >= TavloPresentOutputTypeCount)
        return nullptr;
    if (tell)
        qDebug() << "TavloPresentOutputTarget::startOutput - index: " << row << " type :" << kind;
    if (kind == 4)
        return nullptr;
    MidNode* const node = _midNodes[row][kind < TavloPresentOutputTypeNDI ? Encode : Dispatch].get();
    if (!node && tell)
        qDebug() << "TavloPresentOutputTarget::startOutput: _midNodes == nullptr";
    return node;
}

void TavloPresentOutputTarget::startOutput(const QVariant& index, const QVariant& type, const QVariant& param)
{
    MidNode* const node = receiver(index, type, true);
    if (!node)
        return;
    OutputEvent event;
    event.id = OutputEventId::StartOutput;
    event.index = index.toInt();
    event.type = type.toInt();
    event.param = std::make_shared<const tagTavloPresentOutputParam>(param.value<tagTavloPresentOutputParam>());
    node->post(std::move(event), false);
}

void TavloPresentOutputTarget::stopOutput(const QVariant& index, const QVariant& type, bool wait)
{
    MidNode* const node = receiver(index, type, false);
    if (!node)
        return;
    OutputEvent event;
    event.id = OutputEventId::StopOutput;
    event.index = index.toInt();
    event.type = type.toInt();
    node->post(std::move(event), wait);
}

void TavloPresentOutputTarget::getStatistics(int index, tagTavloOutputStatistics* statistics)
{
    if (index < 0 || index >= TavloPresentOutputIndexCount)
        return;
    for (const auto& node : _midNodes[static_cast<size_t>(index)])
        if (node)
            node->getStatistics(statistics);
}
