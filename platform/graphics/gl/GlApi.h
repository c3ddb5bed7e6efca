#pragma once

// The only door to GL and EGL. Sources that include it belong to platform/graphics.

#define EGL_NO_X11
#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GLES3/gl3.h>

#include <GLES2/gl2ext.h>
