#pragma once

#include <set>
#include <string>
#include <string_view>

#include "tools/loader/engine/Native.h"

namespace tavlen::loader {

/// The words of a code that may be names: it is not parsed, so that words of its comments and texts
/// are among them.
std::set<std::string> wordsOf(std::string_view code);

/// A class by its name, for the global names of classes: the class, or undefined while no image has
/// it.
struct ClassLookup : NativeFunction {
  using NativeFunction::NativeFunction;

  JSValueRef call(const Call& call) override;
};

}  // namespace tavlen::loader
