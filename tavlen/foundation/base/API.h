#pragma once

/// Marks the namespace in public headers. What is declared there is visible in the shared library,
/// which hides everything else; a type that is thrown or asked for its run-time type is the same
/// one in the library and in a program built with hidden symbols.
#define TAVLEN_API [[gnu::visibility("default")]]
