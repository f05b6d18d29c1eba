#pragma once

namespace tavlen::cli {

/// Occupies the descriptors of the standard streams that the parent process closed, so that no file
/// gets them and is mistaken for a stream. Reading or writing these streams remains an error. Call
/// it first.
void occupyClosedStreams();

}  // namespace tavlen::cli
