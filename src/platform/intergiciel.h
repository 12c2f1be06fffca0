// The health-card middleware's one entry point, as both the bridge and the simulator
// see it.
#pragma once

#if defined(_WIN32)
#define ZR_APPEL __stdcall
#define ZR_EXPORT extern "C" __declspec(dllexport)
#else
#define ZR_APPEL
#define ZR_EXPORT extern "C" __attribute__((visibility("default")))
#endif

namespace sv140 {

/// request: Windows-1252 text, NUL-terminated. answer: a buffer of *size bytes filled
/// with NULs that the middleware fills. Returns the error number, 0 on success.
using ZR_Executer_t = int(ZR_APPEL*)(const char* requete, char* reponse, int* taille);

#if defined(_WIN32)
inline constexpr const char* kNomIntergiciel = "WebQuintara2.dll";
#else
inline constexpr const char* kNomIntergiciel = "WebQuintara2.so";
#endif

}  // namespace sv140
