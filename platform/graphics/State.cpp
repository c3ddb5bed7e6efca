#include "graphics/State.h"

namespace tavlo::graphics {

const char* semanticName(Semantic semantic)
{
    constexpr const char* names[semanticCount] = {"POSITION", "TEXCOORD", "COLOR"};
    return names[static_cast<std::size_t>(semantic)];
}

} // namespace tavlo::graphics
