#pragma once

#include "TavloCommonModule/audio/IGLAudioRenderer.h"

#include <tavlo/InterfacePtr.h>

#include <memory>

class GLAudioDeviceContext;

namespace tavlo {
class MixInput;
}

/// The owner's side of one sound of the mix.
class GLAudioRenderer final : public tavlo::Implements<GLAudioRenderer, IGLAudioRenderer>
{
public:
    ~GLAudioRenderer();

    bool create(IGLAudioDeviceContext* context) override;
    void release() override;
    bool write(const void* data, int length, int channels, int bits, int rate) override;
    void writeSilence(int length, int channels, int bits, int rate) override;
    void listen() override;
    void setALSourceVolume(float volume) override;
    void flush(bool now) override;
    int getTime(qint64* time) override;
    void pause(qint64 date) override;
    void resume(qint64 date) override;

private:
    GLAudioDeviceContext* _context = nullptr;
    std::shared_ptr<tavlo::MixInput> _input; ///< null outside a mix
};
