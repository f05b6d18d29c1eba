#pragma once

namespace tavlen::loader {

/// Defines UIColor and UIImage where the program has none, so that constants of them can be tried:
/// they keep what they were made of and describe it. Does nothing without Foundation.
void defineStandInClasses();

}  // namespace tavlen::loader
