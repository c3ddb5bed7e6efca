#include "drawing/TransitionDraw.h"

#include "base/Log.h"
#include "drawing/PrivateUtil.h"
#include "drawing/SeededRandom.h"
#include "drawing/TransitionTable.h"

#include <QDebug>

#include <array>
#include <string_view>
#include <utility>

namespace tavlo {

namespace {

using effects::Effect;
using effects::Result;

constexpr auto floatFailure = "failed to set shader float vector :";
constexpr auto resourceFailure = "failed to set shader resource :";
constexpr auto kindFailure = "failed to applyTransitionEffectDependencyProperty :";
constexpr auto passFailure = "failed to PostprocessTechnique :";

/// Whether a step went well; if not, its words and code go to the log.
bool succeeded(Result result, const char* words)
{
    if (!effects::failed(result))
        return true;
    qDebug().noquote() << words << result << logHeader({"impl\\TavloDrawDX11", "TavloDrawDX11::drawTransition"});
    return false;
}

Result setFloat(Effect& effect, std::string_view name, float value)
{
    return effect.GetVariableByName(name).AsScalar().SetFloat(value);
}

Result setInt(Effect& effect, std::string_view name, int value)
{
    return effect.GetVariableByName(name).AsScalar().SetInt(value);
}

Result setPair(Effect& effect, std::string_view name, std::span<const float, 2> value)
{
    return effect.GetVariableByName(name).AsVector().SetFloatVector(value);
}

Result setSize(Effect& effect, std::string_view name, QSizeF size)
{
    return setPair(effect, name, std::array{static_cast<float>(size.width()), static_cast<float>(size.height())});
}

Result setTexture(Effect& effect, std::string_view name, graphics::TexturePtr texture)
{
    return effect.GetVariableByName(name).AsShaderResource().SetResource(std::move(texture));
}

/// The settings of the kind's row.
Result setRow(Effect& effect, const TransitionRow& row, const TransitionInputs& inputs)
{
    for (const TransitionSetting& setting : row.used()) {
        const Result result = setting.components == 1 ? setFloat(effect, setting.variable, setting.value[0])
                                                      : setPair(effect, setting.variable, setting.value);
        if (effects::failed(result))
            return result;
    }
    if (row.image) {
        const auto slot = static_cast<std::size_t>(row.imageSlot);
        const Result result =
            setTexture(effect, row.image, slot < inputs.images.size() ? inputs.images[slot] : graphics::TexturePtr());
        if (effects::failed(result))
            return result;
    }
    if (!row.randomSeed)
        return effects::resultOk;
    return setFloat(effect, "randomSeed", static_cast<float>(SeededRandom(inputs.randomSeed).below(1000)) / 1000.0F);
}

bool hasSizeOf(const graphics::TexturePtr& texture, QSizeF size)
{
    return texture && texture->desc().width == size.width() && texture->desc().height == size.height();
}

/// How the pictures lie on the target.
Result setGeometry(Effect& effect, const TransitionInputs& inputs)
{
    const bool exact = inputs.targetTopFirst && hasSizeOf(inputs.outgoing.texture, inputs.targetSize) &&
                       hasSizeOf(inputs.incoming.texture, inputs.targetSize);
    const Result result = setFloat(effect, "targetY", inputs.targetTopFirst ? -1.0F : 1.0F);
    return effects::failed(result) ? result : setInt(effect, "texelExact", exact ? 1 : 0);
}

/// Kinds of no family draw with the picture effect, which lacks the variables of a transition: that ends their draw
/// behind these.
bool setFlips(Effect& effect, const TransitionInputs& inputs)
{
    return succeeded(setInt(effect, "flipVert0", inputs.outgoing.flip), resourceFailure) &&
           succeeded(setInt(effect, "flipVert1", inputs.incoming.flip), resourceFailure) &&
           succeeded(setInt(effect, "mirrorHoriz0", 0), resourceFailure) &&
           succeeded(setInt(effect, "mirrorHoriz1", 0), resourceFailure);
}

} // namespace

bool TransitionDraw::apply(graphics::Context& context, Effect& effect, const TransitionInputs& inputs, float position,
                           quint32 kind)
{
    const TransitionPicture* picture0 = &inputs.outgoing;
    const TransitionPicture* picture1 = &inputs.incoming;
    const TransitionRow* const row = findTransition(kind);
    if (row) {
        // The picture effect has no sizes to set and draws no transition.
        if (!succeeded(setSize(effect, "samplerSize0", inputs.outgoing.size), floatFailure) ||
            !succeeded(setSize(effect, "samplerSize1", inputs.incoming.size), floatFailure))
            return false;
        const Result result =
            applyTransitionEffectDependencyProperty(context, effect, inputs, *row, position, picture0, picture1);
        if (!succeeded(result, kindFailure) || !succeeded(setGeometry(effect, inputs), floatFailure))
            return false;
    }
    if (!succeeded(setTexture(effect, "sampler0", picture0->texture), resourceFailure) ||
        !succeeded(setTexture(effect, "sampler1", picture1->texture), resourceFailure))
        return false;
    if (!row && !setFlips(effect, inputs))
        return false;
    return succeeded(setFloat(effect, "transitionProgress", position), floatFailure) &&
           succeeded(setInt(effect, "transitionType", static_cast<int>(kind)), floatFailure) &&
           succeeded(effect.GetTechniqueByName("Transprocess").GetPassByIndex(0).Apply(context), passFailure);
}

Result TransitionDraw::applyTransitionEffectDependencyProperty(graphics::Context& context, Effect& effect,
                                                               const TransitionInputs& inputs, const TransitionRow& row,
                                                               float& progress, const TransitionPicture*& picture0,
                                                               const TransitionPicture*& picture1)
{
    if (row.mask)
        updateTransitionMaskTexture(context, inputs.images, row.kind, progress);
    if (row.turn == TransitionTurn::Swap)
        std::swap(picture0, picture1);
    else if (row.turn == TransitionTurn::Invert)
        progress = 1.0F - progress;
    return setRow(effect, row, inputs);
}

void TransitionDraw::updateTransitionMaskTexture(graphics::Context& context,
                                                 std::span<const graphics::TexturePtr> images, quint32 kind,
                                                 float progress)
{
    if (images.size() <= transitionMaskSlot || !images[transitionMaskSlot])
        return;
    const graphics::TexturePtr& texture = images[transitionMaskSlot];
    const QSize size(static_cast<int>(texture->desc().width), static_cast<int>(texture->desc().height));
    if (_maskImage.size() != size)
        _maskImage = QImage(size, QImage::Format_ARGB32);
    if (_mask.paintTransition(kind, static_cast<double>(progress), _maskImage))
        PrivateUtil::UpdateSubresource(context, texture, 0, 0, std::as_const(_maskImage).bits(),
                                       static_cast<int>(_maskImage.bytesPerLine()), 0, size.height());
}

} // namespace tavlo
