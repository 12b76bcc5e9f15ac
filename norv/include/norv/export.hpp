#pragma once

/// Marks what leaves the host libraries; everything else stays hidden.

#if defined(_WIN32)
#if defined(NORV_BUILDING_LIBRARY)
#define NORV_API __declspec(dllexport)
#else
#define NORV_API __declspec(dllimport)
#endif
#else
#define NORV_API __attribute__((visibility("default")))
#endif
