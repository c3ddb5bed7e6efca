#include "TavloCommonModule/ndi/NdiLibrary.h"

#include "shared/RuntimeLibrary.h"

namespace tavlo::ndi {

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
    const auto resolve = [library](const char* name, auto*& function) {
        return resolveFunction("NDI", library, name, function);
    };
    const bool complete =
        resolve("NDIlib_initialize", initialize) && resolve("NDIlib_send_create", createSender) &&
        resolve("NDIlib_send_destroy", destroySender) && resolve("NDIlib_send_send_video_v2", sendVideo) &&
        resolve("NDIlib_util_send_send_audio_interleaved_16s", sendAudio) &&
        resolve("NDIlib_find_create_v2", createFinder) && resolve("NDIlib_find_destroy", destroyFinder) &&
        resolve("NDIlib_find_wait_for_sources", waitForSources) &&
        resolve("NDIlib_find_get_current_sources", sources) && resolve("NDIlib_recv_create_v3", createReceiver) &&
        resolve("NDIlib_recv_destroy", destroyReceiver) && resolve("NDIlib_recv_capture_v2", capture) &&
        resolve("NDIlib_recv_free_video_v2", freeVideo) && resolve("NDIlib_recv_free_audio_v2", freeAudio) &&
        resolve("NDIlib_recv_get_no_connections", connections);
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
