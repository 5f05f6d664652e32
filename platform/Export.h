// How a shared library shows a name to the outside; everything else in it is hidden.
#pragma once

#ifdef _WIN32
#define VX_EXPORT __declspec(dllexport)
#else
#define VX_EXPORT __attribute__((visibility("default")))
#endif
