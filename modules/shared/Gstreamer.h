#pragma once

#include <gst/gst.h>

#include <memory>
#include <string>
#include <utility>

namespace tavlo {

struct GstUnref
{
    void operator()(void* object) const { g_object_unref(object); }
};

/// Holds one reference to an object of GStreamer's or GLib's.
template <class Object>
using GstOwned = std::unique_ptr<Object, GstUnref>;

/// The message of a failure, which is freed; `otherwise` where there is none.
inline std::string takeGstError(GError* failure, const char* otherwise)
{
    std::string text = failure ? failure->message : otherwise;
    g_clear_error(&failure);
    return text;
}

/// False, the reason in `error`, when GStreamer does not start. Any thread, any number of times.
inline bool initGstreamer(std::string& error)
{
    GError* failure = nullptr;
    if (gst_init_check(nullptr, nullptr, &failure))
        return true;
    error = takeGstError(failure, "GStreamer does not start");
    return false;
}

} // namespace tavlo
