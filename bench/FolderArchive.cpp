// The work of an export and of an import, as programs to be timed:
//   FolderArchive zip FOLDER COPY ARCHIVE    copies the folder and makes an archive of the copy
//   FolderArchive unzip ARCHIVE FOLDER
// Both print their peak memory use in kB.
#include <exception>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "tavlen/foundation/files/FileTree.h"
#include "tavlen/foundation/zip/ZIPArchive.h"

namespace {

/// The peak of this program alone; the one from wait4() includes that of its parent process.
std::string peakMemory() {
  std::ifstream status("/proc/self/status");
  std::string word;
  while (status >> word && word != "VmHWM:") {
  }
  status >> word;
  return word;
}

}  // namespace

int main(int count, char** values) {
  const std::vector<std::string> arguments(values + 1, values + count);
  try {
    const bool zips = arguments.size() == 4 && arguments[0] == "zip";
    const bool unzips = arguments.size() == 3 && arguments[0] == "unzip";
    if (zips) {
      tavlen::copyItem(arguments[1], arguments[2]);
      tavlen::ZIPArchive::zipItem(arguments[2], arguments[3]);
    }
    if (unzips) tavlen::ZIPArchive::unzipItem(arguments[1], arguments[2]);
    if (zips || unzips) {
      std::cout << peakMemory() << '\n';
      return 0;
    }
    std::cerr << "usage: FolderArchive zip FOLDER COPY ARCHIVE | unzip ARCHIVE FOLDER\n";
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
  }
  return 1;
}
