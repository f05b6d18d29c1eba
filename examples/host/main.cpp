// What a graphical host does with the library, in the order in which its user comes to it.
//   tavlen-host ROOT RESOURCES HELPER
// ROOT is the device's "/", such as the folder that examples/make-device makes; RESOURCES contains
// ob.js; HELPER is the file-operations helper, kvfileops.
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <functional>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>

#include "tavlen/bundles/IPA.h"
#include "tavlen/device/DevicePrograms.h"
#include "tavlen/device/DeviceRoot.h"
#include "tavlen/editing/HookManager.h"
#include "tavlen/foundation/image/Image.h"
#include "tavlen/foundation/tasks/MainQueue.h"
#include "tavlen/foundation/tasks/NotificationCenter.h"
#include "tavlen/foundation/tasks/Progress.h"
#include "tavlen/introspection/classes/StaticClassParser.h"
#include "tavlen/items/TweakDiffNotifications.h"
#include "tavlen/parameters/ParameterContainer.h"
#include "tavlen/store/InstallableItem.h"
#include "tavlen/store/TweakManager.h"
#include "tavlen/tweaks/Hook.h"
#include "tavlen/tweaks/TweakProcessor.h"

namespace {

using tavlen::IPA;
using tavlen::NotificationCenter;

/// A window that shows the stored tweaks, and follows their changes until it is closed.
class TweaksWindow {
 public:
  TweaksWindow()
      : token_(tavlen::observeTweakDiffs(
            NotificationCenter::default_(), [this, life = std::weak_ptr(life_)](const auto& diffs) {
              // Views belong to the main thread, which may close the window before it runs this.
              tavlen::MainQueue::shared().async([this, life, count = diffs.size()] {
                if (!life.expired()) refresh(count);
              });
            })) {}
  TweaksWindow(const TweaksWindow&) = delete;
  TweaksWindow& operator=(const TweaksWindow&) = delete;
  ~TweaksWindow() { NotificationCenter::default_().removeObserver(token_); }

 private:
  void refresh(std::size_t changes) {
    std::cout << changes << " change; the tweaks are now:\n";
    for (const auto& [item, configuration] : tavlen::TweakManager::listedTweaks())
      std::cout << "  " << configuration.name() << " for " << configuration.bundleID() << '\n';
  }

  std::shared_ptr<int> life_ = std::make_shared<int>();  // expires with the window
  NotificationCenter::Token token_;
};

void showApps() {
  for (const std::shared_ptr<IPA>& app : IPA::all()) {
    try {
      const std::string name = app->infoManager().info().name();
      const tavlen::Image icon = app->infoManager().icon();
      std::cout << name << ", icon of " << icon.pngData().size() << " bytes of PNG\n";
    } catch (const std::exception& error) {
      std::cout << app->appDir().filename().string() << ": " << error.what() << '\n';
    }
  }
}

/// Runs `work` on a thread, because reading a large app may take seconds, and keeps the host's main
/// loop running until it ends. A host with a window would offer to cancel `progress`.
void runWithProgress(const std::function<void(const std::shared_ptr<tavlen::Progress>&)>& work) {
  const std::shared_ptr<tavlen::Progress> progress = tavlen::Progress::discrete(1);
  bool isFinished = false;
  std::exception_ptr error;
  std::thread thread([&] {
    try {
      work(progress);
    } catch (...) {
      error = std::current_exception();
    }
    tavlen::MainQueue::shared().async([&] { isFinished = true; });
  });
  while (!isFinished) tavlen::MainQueue::shared().waitAndDrain(std::chrono::seconds(1));
  thread.join();
  if (error) std::rethrow_exception(error);
}

/// The method that the user picks: here the first that takes nothing and returns an object.
tavlen::Hook pickedHook(IPA& app) {
  tavlen::StaticClassParser::Classes classes;
  runWithProgress([&](const std::shared_ptr<tavlen::Progress>& progress) {
    classes = tavlen::StaticClassParser().parse(*app.mainExecutable(), progress);
  });
  std::cout << classes.size() << " classes\n";
  for (const auto& cls : classes) {
    for (const auto& method : cls->methods) {
      if (std::string_view(method->encoding) != "@16@0:8") continue;
      std::cout << "picked " << method->plainDeclaration() << " of " << cls->name.str() << '\n';
      // -1 stands for the result, 0 for the first argument.
      return tavlen::Hook::with(*cls, *method,
                                {{-1, tavlen::ValueParameter<std::string>{"Hello from the host"}}});
    }
  }
  throw std::runtime_error("the app has no method that returns an object");
}

void makeTweak(const std::shared_ptr<IPA>& app, const std::string& resources) {
  const auto tweak =
      tavlen::TweakFile::create("Made by the host", tavlen::TweakColor::lightBlue,
                                tavlen::TweakGlyph::default_(), app->infoManager().info().bundleID);
  const tavlen::Hook hook = pickedHook(*app);
  tavlen::HookManager{tweak, hook.identity(), nullptr}.setHook(hook);
  tavlen::MainQueue::shared().drain();
  const auto [code, map] = tavlen::TweakProcessor(resources).process(*tweak);
  std::cout << "the code:\n" << code << '\n';

  const tavlen::InstallableItem installable(tavlen::TweakManager::openWithID(tweak->id()),
                                            resources, false);
  app->setActiveTweak(&installable);
  std::cout << "installed " << app->activeTweakID().value_or("nothing") << '\n';
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "usage: tavlen-host ROOT RESOURCES HELPER\n";
    return 2;
  }
  try {
    tavlen::DeviceRoot::setShared(tavlen::DeviceRoot(argv[1]));
    ::setenv("TAVLEN_ROOT", argv[1], 1);  // for the helper
    tavlen::DevicePrograms::setForOtherRoots({argv[3], {}, {}});
    showApps();
    const TweaksWindow window;
    makeTweak(IPA::findWithBundleID("com.example.notes"), argv[2]);
  } catch (const std::exception& error) {
    std::cerr << "tavlen-host: " << error.what() << '\n';
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
