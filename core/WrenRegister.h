// The package's one entry point, called by the host once after loading the module.
#pragma once

#ifdef _WIN32
#define WREN_EXPORT __declspec(dllexport)
#else
#define WREN_EXPORT __attribute__((visibility("default")))
#endif

extern "C" WREN_EXPORT void WrenRegister(bool designTime);

/// The type of WrenRegister as the host finds it in a module.
using TWrenRegisterProc = void (*)(bool designTime);
