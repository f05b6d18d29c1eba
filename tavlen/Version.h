#pragma once

/// The version of the library that these headers belong to. The build reads it from here.
#define TAVLEN_VERSION_MAJOR 0
#define TAVLEN_VERSION_MINOR 1
#define TAVLEN_VERSION_PATCH 0
#define TAVLEN_VERSION "0.1.0"
