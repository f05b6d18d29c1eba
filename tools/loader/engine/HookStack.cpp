#include "tools/loader/engine/HookStack.h"

#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

namespace tavlen::loader {

namespace {

struct Threads {
  std::mutex lock;
  std::vector<const HookStack::Running*> running;
};

/// Never destroyed: threads may end after the program's main function.
Threads& threads() {
  static auto& shared = *new Threads();
  return shared;
}

}  // namespace

HookStack& HookStack::current() {
  static thread_local HookStack stack;
  return stack;
}

HookStack::HookStack() {
  const std::lock_guard lock(threads().lock);
  threads().running.push_back(&running_);
}

HookStack::~HookStack() {
  const std::lock_guard lock(threads().lock);
  std::erase(threads().running, &running_);
}

void HookStack::forEachThread(FunctionRef<void(const Running&)> visit) {
  const std::lock_guard lock(threads().lock);
  for (const Running* running : threads().running) visit(*running);
}

/// Only this thread writes, and the watch reads now and then: no order is needed.
void HookStack::computes(const WatchedCode* code) {
  running_.serial.store(running_.serial.load(std::memory_order_relaxed) + 1,
                        std::memory_order_relaxed);
  running_.code.store(code, std::memory_order_relaxed);
}

HookStack::Entry::Entry(HookStack& stack, HookRecord& record) : stack_(stack) {
  record.outer = stack.top_;
  stack.top_ = &record;
  stack.computes(record.watched);
}

HookStack::Entry::~Entry() {
  stack_.top_ = stack_.top_->outer;
  stack_.computes(nullptr);  // below it is the program's code, or nothing
}

HookStack::OutermostCode::OutermostCode(const WatchedCode& code, HookStack& stack)
    : stack_(stack), former_(std::exchange(stack.outermost_, &code)) {
  stack_.computes(&code);
}

HookStack::OutermostCode::~OutermostCode() {
  stack_.outermost_ = former_;
  stack_.computes(nullptr);
}

HookStack::Outside::Outside(HookStack& stack)
    : stack_(stack), ownWork_(std::exchange(stack.ownWork_, 0)) {
  stack_.computes(nullptr);
}

HookStack::Outside::~Outside() {
  stack_.ownWork_ = ownWork_;
  stack_.computes(stack_.top_ != nullptr ? stack_.top_->watched : stack_.outermost_);
}

}  // namespace tavlen::loader
