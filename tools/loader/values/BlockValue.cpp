#include "tools/loader/values/BlockValue.h"

#include <stdexcept>

#include "tavlen/foundation/objc/ObjCBlock.h"
#include "tools/loader/base/BlockObject.h"
#include "tools/loader/engine/Engine.h"
#include "tools/loader/values/BlockType.h"

namespace tavlen::loader {

BlockValue::BlockValue(Engine& owner, const BlockType& type, id object)
    : FunctionValue(owner, ObjCBlock::codeOf(blockIn(object)), type.signature(), kBlockKind,
                    blockIn(object)),
      object_(object) {}

BlockValue::~BlockValue() { engine.releases().add(object_, true); }

JSValueRef BlockValue::adopting(Engine& engine, const BlockType& type, id object) {
  return JSObjectMake(engine.context(), nativeFunctionClass(),
                      new BlockValue(engine, type, object));
}

JSValueRef BlockValue::make(Engine& engine, const BlockType& type, void* block) {
  if (id object = newBlockObject(block)) return adopting(engine, type, object);
  throw std::runtime_error("no Foundation is loaded to keep a block");
}

}  // namespace tavlen::loader
