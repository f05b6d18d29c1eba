#pragma once

#include <memory>
#include <string>

#include "tests/faults/Operation.h"
#include "tests/faults/SampleStore.h"
#include "tests/faults/injector/FaultInjector.h"

namespace tavlen::faults {

/// Runs one operation again and again, each time with another of its calls hit by a fault, until
/// one run is hit by none; and checks what every run leaves. Only what is to be killed gets a
/// process of its own, as that takes as long as the operation.
class FaultLoop {
 public:
  explicit FaultLoop(const Operation& operation);
  FaultLoop(const FaultLoop&) = delete;
  FaultLoop& operator=(const FaultLoop&) = delete;
  ~FaultLoop();

  /// Runs it without a fault: it must succeed, and in the right order. What it leaves is what all
  /// later runs are measured by.
  void runUntouched();
  /// Fails with the call hit first, then the second, and so on, in every way.
  void runAll();

 private:
  struct Fault;
  struct Outcome;

  void runAll(const Fault& fault);
  Outcome runOnce(const Plan& plan) const;
  bool run(const Plan& plan) const;
  /// Returns the status that waitpid() tells.
  int runInChild(const Plan& plan) const;
  std::string fault(const Outcome& outcome, const Fault& fault) const;
  bool isLeftover(const Tree& tree) const;
  bool isWithoutRecord(const Tree& tree) const;
  bool hasWholeItems(const Tree& tree) const;
  Tree tree() const;

  const Operation& operation_;
  SampleStore store_;
  Tree old_;
  Tree new_;
  struct Shared;
  Shared* shared_;  ///< with the processes that run it
};

}  // namespace tavlen::faults
