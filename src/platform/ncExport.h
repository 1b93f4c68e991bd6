// Marks the one function a module file exports; everything else stays hidden.
#pragma once

#ifdef _WIN32
#define NC_EXPORT __declspec(dllexport)
#else
#define NC_EXPORT __attribute__((visibility("default")))
#endif
