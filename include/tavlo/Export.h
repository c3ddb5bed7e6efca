#pragma once

/// Marks what `libtavlo.so` shows to a host. Everything else stays hidden.
#define TAVLO_EXPORT __attribute__((visibility("default")))
