#include "tavlen/device/SystemService.h"

#include <memory>
#include <utility>

#include "tavlen/foundation/objc/ObjCBlock.h"
#include "tavlen/foundation/objc/ObjCRuntime.h"

namespace tavlen::SystemService {

namespace {

using namespace ObjCRuntime;

/// Call only inside runGuarded().
id sharedService() { return send(classNamed("FBSSystemService"), "sharedService"); }

// The functions below create autoreleased objects; call them only inside runGuarded(). They return
// null for malformed text, of which the system would use a part or raise an exception.

id makeDictionary() { return send(classNamed("NSMutableDictionary"), "dictionary"); }

void setMember(id dictionary, const char* key, id value) {
  send<void>(dictionary, "setObject:forKey:", value, makeString(key));
}

id makeEnvironment(const std::map<std::string, std::string>& variables) {
  id environment = makeDictionary();
  for (const auto& [name, value] : variables) {
    id nameText = makeString(name);
    id valueText = makeString(value);
    if (nameText == nullptr || valueText == nullptr) return nullptr;
    send<void>(environment, "setObject:forKey:", valueText, nameText);
  }
  return environment;
}

id makeOptions(const OpenOptions& options) {
  id environment = makeEnvironment(options.environment);
  if (environment == nullptr) return nullptr;
  id debugOptions = makeDictionary();
  setMember(debugOptions, "__Environment", environment);
  id dictionary = makeDictionary();
  const auto isSuspended = static_cast<BOOL>(options.isSuspended);
  setMember(dictionary, "__ActivateSuspended",
            send(classNamed("NSNumber"), "numberWithBool:", isSuspended));
  setMember(dictionary, "__DebugOptions", debugOptions);
  return dictionary;
}

std::string descriptionOf(id error) {
  std::optional<std::string> description;
  runGuarded([&] { description = text(send(error, "description")); });
  return description.value_or("unknown error");
}

/// Called on the system's thread.
void complete(const OpenCompletion& completion, id error) {
  const AutoreleasePool pool;
  completion(error == nullptr ? std::nullopt : std::optional(descriptionOf(error)));
}

}  // namespace

bool isAvailable() {
  bool available = false;
  const AutoreleasePool pool;
  runGuarded([&] { available = sharedService() != nullptr; });
  return available;
}

std::optional<pid_t> pidForApplication(const std::string& bundleID) {
  pid_t pid = -1;
  const AutoreleasePool pool;
  runGuarded([&] {
    id service = sharedService();
    id identifier = makeString(bundleID);
    if (service != nullptr && identifier != nullptr) {
      pid = send<pid_t>(service, "pidForApplication:", identifier);
    }
  });
  // Values below 1 would address a group of processes, or all.
  if (pid < 1) return std::nullopt;
  return pid;
}

void openApplication(const std::string& bundleID, const OpenOptions& options,
                     OpenCompletion completion) {
  const AutoreleasePool pool;
  std::optional<std::string> error = "the launch service raised an exception";
  runGuarded([&] {
    id service = sharedService();
    id identifier = makeString(bundleID);
    id dictionary = makeOptions(options);
    if (service == nullptr) {
      error = "the launch service is missing";
    } else if (identifier == nullptr || dictionary == nullptr) {
      error = "a text for the launch service is not valid UTF-8";
    } else {
      const ObjCBlock block =
          makeBlock<void(id)>([completion](id failure) { complete(completion, failure); });
      send<void>(service, "openApplication:options:withResult:", identifier, dictionary,
                 block.get());
      error.reset();
    }
  });
  if (error) completion(error);
}

}  // namespace tavlen::SystemService
