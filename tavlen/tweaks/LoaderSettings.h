#pragma once

/// The environment of a program that a loader is preloaded into. The loader removes these
/// variables, and its library from LD_PRELOAD, before the program starts.
namespace tavlen::loaderSettings {

inline constexpr const char* kProgram =
    "TAVLEN_LOADER_PROGRAM";  ///< the path without links of the only one to act in
inline constexpr const char* kLibrary =
    "TAVLEN_LOADER_LIBRARY";  ///< the path of the loader in LD_PRELOAD
inline constexpr const char* kTweak = "TAVLEN_LOADER_TWEAK";  ///< the folder of the tweak's package
inline constexpr const char* kEvents =
    "TAVLEN_LOADER_EVENTS";  ///< the descriptor of a socket for events: one a packet
inline constexpr const char* kTrace = "TAVLEN_LOADER_TRACE";  ///< set to report every hooked call
inline constexpr const char* kLimit =
    "TAVLEN_LOADER_LIMIT";  ///< milliseconds after which a script is slow

/// The key of an array in the package's Info.plist: the keys of the program's own that the tweak
/// removes.
inline constexpr const char* kRemovedKeys = "TavlenRemovedKeys";

}  // namespace tavlen::loaderSettings
