// How the provider's library shows a class or a function to its hosts; everything else in it is hidden.
#pragma once

#if !defined(_WIN32)
#define VX_PROVIDER_API __attribute__((visibility("default")))
#elif defined(VX_PROVIDER_BUILD)  // the library itself, and tests that link its objects
#define VX_PROVIDER_API __declspec(dllexport)
#else
#define VX_PROVIDER_API __declspec(dllimport)
#endif
