#pragma once

/// NORV_API marks what leaves the host libraries, everything else stays hidden; NORV_LOCAL takes a
/// part of an exported class out again.

#if defined(_WIN32)
#define NORV_LOCAL
#if defined(NORV_BUILDING_LIBRARY)
#define NORV_API __declspec(dllexport)
#else
#define NORV_API __declspec(dllimport)
#endif
#else
#define NORV_LOCAL __attribute__((visibility("hidden")))
#define NORV_API __attribute__((visibility("default")))
#endif
