#pragma once

namespace tavlen::loader {

/// What a wrapper does about references to its object.
enum class Ownership {
  borrowed,  ///< it retains the object
  adopted,   ///< it takes over a reference of the caller's
};

}  // namespace tavlen::loader
