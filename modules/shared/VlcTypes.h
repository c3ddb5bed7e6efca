#pragma once

// The one door to the VLC core's picture and block types, and to the calls that make and release them.

#include <sys/types.h> // ssize_t, which the headers below use

#include <vlc_common.h>

#include <vlc_block.h>
#include <vlc_fourcc.h>
#include <vlc_picture.h>

// Macros of common words would reach every file that includes this one.
#undef likely
#undef unlikely
#undef unreachable
#undef container_of
#undef msleep
#undef mwait
#undef ARRAY_SIZE
#undef __MIN
#undef __MAX
