#pragma once

#include <ffi.h>
#include <objc/objc.h>

#include <JavaScriptCore/JavaScript.h>

namespace tavlen::loader {

class BlockType;
class Engine;

/// An object with a block that calls `function`; see BlockObject.h. The caller owns it. Any thread
/// may call the block and its copies, as long as there is one. What the function throws is raised
/// if it is an exception of the program. Any other is reported as a mistake, as is a result that
/// does not convert, and the block answers zero. Throws std::runtime_error where no Foundation is
/// loaded.
id newScriptBlock(Engine& engine, const BlockType& type, JSObjectRef function);

/// The code of these blocks, for libffi. `type` is a BlockType.
void enterScriptBlock(ffi_cif* cif, void* result, void** arguments, void* type);

}  // namespace tavlen::loader
