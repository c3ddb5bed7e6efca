#include "TavloCommonModule/ndi/NdiLibrary.h"

#include <QDebug>

#include <dlfcn.h>

namespace tavlo::ndi {

namespace {

template <class Function>
bool resolve(void* library, const char* name, Function& function)
{
    function = reinterpret_cast<Function>(dlsym(library, name));
    if (!function)
        qDebug() << "NDI: the library has no" << name;
    return function != nullptr;
}

} // namespace

bool Library::open()
{
    void* library = nullptr;
    for (const char* name : {"libndi.so.6", "libndi.so.5", "libndi.so.4"})
        if (!library)
            library = dlopen(name, RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        qDebug() << "NDI: no libndi.so.6, .5 or .4 is installed:" << dlerror();
        return false;
    }
    const bool complete = resolve(library, "NDIlib_initialize", initialize) &&
                          resolve(library, "NDIlib_send_create", createSender) &&
                          resolve(library, "NDIlib_send_destroy", destroySender) &&
                          resolve(library, "NDIlib_send_send_video_v2", sendVideo) &&
                          resolve(library, "NDIlib_util_send_send_audio_interleaved_16s", sendAudio) &&
                          resolve(library, "NDIlib_find_create_v2", createFinder) &&
                          resolve(library, "NDIlib_find_destroy", destroyFinder) &&
                          resolve(library, "NDIlib_find_wait_for_sources", waitForSources) &&
                          resolve(library, "NDIlib_find_get_current_sources", sources) &&
                          resolve(library, "NDIlib_recv_create_v3", createReceiver) &&
                          resolve(library, "NDIlib_recv_destroy", destroyReceiver) &&
                          resolve(library, "NDIlib_recv_capture_v2", capture) &&
                          resolve(library, "NDIlib_recv_free_video_v2", freeVideo) &&
                          resolve(library, "NDIlib_recv_free_audio_v2", freeAudio) &&
                          resolve(library, "NDIlib_recv_get_no_connections", connections);
    if (!complete)
        return false;
    if (!initialize()) {
        qDebug() << "NDI: the library refuses this processor";
        return false;
    }
    return true;
}

const Library* Library::get()
{
    static Library library;
    static const bool opened = library.open();
    return opened ? &library : nullptr;
}

} // namespace tavlo::ndi
