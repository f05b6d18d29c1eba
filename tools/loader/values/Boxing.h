#pragma once

#include <objc/objc.h>

#include <JavaScriptCore/JavaScript.h>

namespace tavlen::loader {

class Engine;

/// The object for a value of a script: that of a wrapper, an autoreleased NSString, NSNumber or
/// NSArray for a string, a number, a truth value or an array, nil for null and undefined. The
/// elements of an array are boxed, too, null as NSNull. Throws ScriptError for anything else, and
/// for arrays that contain themselves or have too many elements, together with those in them.
id boxed(Engine& engine, JSValueRef value);

/// The autoreleased NSDictionary of an array of [key, value] pairs, which are boxed as elements
/// are. Throws ScriptError.
id boxedDictionary(Engine& engine, JSValueRef entries);

}  // namespace tavlen::loader
