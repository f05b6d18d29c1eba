#pragma once

#include "cli/tweaks/TextMessages.h"
#include "tavlen/tweaktext/TweakText.h"

namespace tavlen::cli {

/// Sets the types of the hooks for which the text has none, from the classes of the tweak's app on
/// this device. Reads no class if the text has all types. Each hook whose types are not found is an
/// error of the text; what cannot be read of the app is a warning. Throws as dumpClasses() does if
/// the user cancels it.
void lookUpTypes(TweakText& text, TextMessages& messages);

}  // namespace tavlen::cli
