#pragma once
// Marks the classes and functions that libvexa exports; everything else stays internal.

#if defined(_WIN32)
#if defined(VEXA_BUILDING)
#define VEXA_API __declspec(dllexport)
#else
#define VEXA_API __declspec(dllimport)
#endif
#else
#define VEXA_API __attribute__((visibility("default")))
#endif
