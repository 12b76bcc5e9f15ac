#pragma once

/// Marks a function that leaves the link's shared library; everything else stays hidden.
#if defined(_WIN32)
#define VEX_EXPORTED __declspec(dllexport)
#else
#define VEX_EXPORTED __attribute__((visibility("default")))
#endif
