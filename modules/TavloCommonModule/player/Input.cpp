#include "TavloCommonModule/player/Input.h"

#include "TavloCommonModule/player/MediaInput.h"
#include "TavloCommonModule/player/NdiInput.h"
#include "TavloCommonModule/player/PipelineInput.h"

namespace tavlo {

std::unique_ptr<Input> makeInput(const InputLocation& location, const std::atomic<bool>& interrupted)
{
    switch (location.reader) {
    case InputLocation::Reader::Ndi:
        return std::make_unique<NdiInput>(interrupted);
    case InputLocation::Reader::Gstreamer:
        return std::make_unique<PipelineInput>(interrupted);
    case InputLocation::Reader::Ffmpeg:
        break;
    }
    return std::make_unique<MediaInput>(interrupted);
}

} // namespace tavlo
