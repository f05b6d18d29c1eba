#pragma once

#include <string>

namespace tavlen {

/// Where the tests find what they use of the clone and of the build; tests/CMakeLists.txt lists the
/// values in this order. Only one source knows them, so that a compiler cache can serve the others
/// to every clone.
struct TestPaths {
  std::string examples;
  std::string testData;
  std::string resources;          ///< the folder of the transpiler's script
  std::string foundationLibrary;  ///< GNUstep's
  std::string machoImages;        ///< the folder of what tests/macho/CMakeLists.txt makes
  std::string command;
  std::string fileOperations;
  std::string dumpAgent;
  std::string dumpAgentWithClasses;  ///< the agent in a program that has classes, as apps do
  std::string archivePeer;
  std::string standInsLibrary;
  std::string dumpedImage;
  std::string classesImage;
  std::string initialisersImage;
  std::string noClassesImage;
  std::string loaderProgram;
  std::string lateImage;
};
const TestPaths& paths();

}  // namespace tavlen
