#include "tools/loader/ClassNames.h"

#include <algorithm>

#include "tavlen/foundation/text/Characters.h"
#include "tools/loader/base/EngineString.h"
#include "tools/loader/base/Messages.h"
#include "tools/loader/engine/Engine.h"

namespace tavlen::loader {

namespace {

/// Names of classes are ASCII, but a name of the script may go on with other characters.
bool isPartOfWord(char c) {
  return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == '$' ||
         static_cast<unsigned char>(c) >= 0x80;
}

}  // namespace

std::set<std::string> wordsOf(std::string_view code) {
  std::set<std::string> words;
  auto end = code.begin();
  while (true) {
    const auto begin = std::find_if(end, code.end(), isPartOfWord);
    if (begin == code.end()) return words;
    end = std::find_if_not(begin, code.end(), isPartOfWord);
    if (!isDigit(*begin)) words.emplace(begin, end);
  }
}

JSValueRef ClassLookup::call(const Call& call) {
  const std::string name = EngineString(call.context, call[0]).utf8();
  Class cls = ObjCRuntime::classNamed(name.c_str());
  if (cls == nullptr) return JSValueMakeUndefined(call.context);
  return engine.objects().wrapped(reinterpret_cast<id>(cls), Ownership::borrowed);
}

}  // namespace tavlen::loader
