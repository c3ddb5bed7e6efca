#pragma once

#include "drawing/TransitionMask.h"

#include <tavlo/TavloTransitionKinds.h>

#include <QtGlobal>

#include <array>
#include <optional>
#include <span>
#include <string_view>

namespace tavlo {

/// Numbers that the code names; the others are rows of the table alone.
namespace transitionKind {
inline constexpr quint32 fadeNormal = 22;
inline constexpr quint32 applyTextureMap = 72; ///< shows the outgoing picture whatever the position
inline constexpr quint32 firstLuma = 81;
inline constexpr quint32 lastLuma = 112;
} // namespace transitionKind

inline constexpr int transitionMaskSlot = 4;    ///< image slot of the mask
inline constexpr int transitionLumaSlot = 48;   ///< image slot of the first luma
inline constexpr float transitionFuzzy = 0.01F; ///< half the soft edge of a wipe, in parts of the picture

/// The two tools that make one shader serve a kind and its mirror.
enum class TransitionTurn : quint8
{
    None,
    Invert, ///< the shader's position is 1 - position
    Swap,   ///< the shader's first picture is the incoming one
};

/// One "name = value" on the effect.
struct TransitionSetting
{
    const char* variable = nullptr;
    int components = 0; ///< 1 or 2
    std::array<float, 2> value{};
};

/// How one kind is drawn.
struct TransitionRow
{
    quint32 kind = 0;
    const char* name = nullptr; ///< as "erase_Left"; lumas bear their image's name, as "lumas_box-topleft"
    TransitionTurn turn = TransitionTurn::None;
    std::optional<MaskShape> mask; ///< painted for each frame
    bool randomSeed = false;       ///< each frame sets "randomSeed" anew
    const char* image = nullptr;   ///< the texture variable that takes `imageSlot`, or none
    int imageSlot = -1;
    int settingCount = 0;
    std::array<TransitionSetting, 4> settings{};

    std::span<const TransitionSetting> used() const
    {
        return {settings.data(), static_cast<std::size_t>(settingCount)};
    }
};

/// All kinds in ascending order. Any thread, as everything here.
std::span<const TransitionRow> transitionRows();

/// The row of a kind, or null for 0, the gaps, and numbers beyond.
const TransitionRow* findTransition(quint32 kind);

/// The row of a name, or null. Letter case counts.
const TransitionRow* findTransition(std::string_view name);

/// The family of a kind, which is also the index of its effect.
TavloPresentEffectKindCatalog transitionFamily(quint32 kind);

} // namespace tavlo
