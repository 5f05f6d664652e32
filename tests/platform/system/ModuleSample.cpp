// What the module tests load: a library with one export of its own, which uses one name of a library beneath.
#include <cstdlib>

#ifdef _WIN32
#define VX_SAMPLE_EXPORT extern "C" __declspec(dllexport)
#else
#define VX_SAMPLE_EXPORT extern "C" __attribute__((visibility("default")))
#endif

VX_SAMPLE_EXPORT long VxSampleNumber(const char* digits);

long VxSampleNumber(const char* digits) {
    return std::strtol(digits, nullptr, 10);
}
