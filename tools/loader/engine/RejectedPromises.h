#pragma once

namespace tavlen::loader {

class Engine;

/// From now on a promise of the engine's context that is rejected is reported as a mistake if
/// nothing has taken up its error when the script that runs has ended. Does nothing with an engine
/// that cannot tell. Call once.
void reportRejectedPromises(Engine& engine);

}  // namespace tavlen::loader
