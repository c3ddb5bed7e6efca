#include "TavloCommonModule/audio/GLAudioRenderer.h"

#include "TavloCommonModule/audio/GLAudioDeviceContext.h"
#include "TavloCommonModule/audio/MixInput.h"
#include "shared/ModuleFactory.h"

#include <tavlo/Export.h>

GLAudioRenderer::~GLAudioRenderer() { release(); }

bool GLAudioRenderer::create(IGLAudioDeviceContext* context)
{
    release();
    _context = static_cast<GLAudioDeviceContext*>(context);
    if (_context)
        _input = _context->addInput();
    return _input != nullptr;
}

void GLAudioRenderer::release()
{
    if (_input)
        _context->removeInput(_input);
    _input.reset();
    _context = nullptr;
}

namespace {

tavlo::SoundFormat formatOf(int channels, int bits, int rate)
{
    return {channels, bits == 8 || bits == 16 ? bits : 0, rate}; // 32 bits need not be floats
}

} // namespace

bool GLAudioRenderer::write(const void* data, int length, int channels, int bits, int rate)
{
    return _input && _input->write(data, length, formatOf(channels, bits, rate));
}

void GLAudioRenderer::writeSilence(int length, int channels, int bits, int rate)
{
    if (_input)
        _input->writeSilence(length, formatOf(channels, bits, rate));
}

void GLAudioRenderer::listen()
{
    if (_input)
        _input->listen();
}

void GLAudioRenderer::setALSourceVolume(float volume)
{
    if (_input && volume >= 0.0F)
        _input->setVolume(volume);
}

void GLAudioRenderer::flush(bool now)
{
    if (_input)
        _input->flush(now);
}

int GLAudioRenderer::getTime(qint64* time)
{
    *time = _input ? _input->playedMicroseconds() : 0;
    return _input ? 0 : -1;
}

void GLAudioRenderer::pause(qint64)
{
    if (_input)
        _input->pause(true);
}

void GLAudioRenderer::resume(qint64)
{
    if (_input)
        _input->pause(false);
}

extern "C" TAVLO_EXPORT IUnknownEx* CreateTavloGLAudioRenderer(const TavloInterfaceId& id, quint32 version)
{
    return tavlo::makeForModule<GLAudioRenderer>(id, version);
}
