#pragma once

#include "TavloCommonModule/player/FrameInput.h"

namespace tavlo {

/// A card that GStreamer has the elements for. The location's `url` is a source of pictures in GStreamer's words, its
/// `sound` one of sound; either may be missing.
class PipelineInput final : public FrameInput
{
public:
    explicit PipelineInput(const std::atomic<bool>& interrupted);
    ~PipelineInput() override;

private:
    class Pipeline;

    QString connect(const InputLocation& location, bool pictures, bool sound) override;
    void disconnect() override;
    int fetch(Arrival& arrival) override;

    QString _name;
    std::unique_ptr<Pipeline> _pipeline;
};

} // namespace tavlo
