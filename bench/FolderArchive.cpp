// What an export and an import cost, as programs to be timed:
//   FolderArchive zip FOLDER COPY ARCHIVE    copies the folder and makes an archive of the copy
//   FolderArchive unzip ARCHIVE FOLDER
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "tavlen/foundation/FileTree.h"
#include "tavlen/foundation/ZIPArchive.h"

int main(int count, char** values) {
  const std::vector<std::string> arguments(values + 1, values + count);
  try {
    if (arguments.size() == 4 && arguments[0] == "zip") {
      tavlen::copyItem(arguments[1], arguments[2]);
      tavlen::ZIPArchive::zipItem(arguments[2], arguments[3]);
      return 0;
    }
    if (arguments.size() == 3 && arguments[0] == "unzip") {
      tavlen::ZIPArchive::unzipItem(arguments[1], arguments[2]);
      return 0;
    }
    std::cerr << "usage: FolderArchive zip FOLDER COPY ARCHIVE | unzip ARCHIVE FOLDER\n";
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
  }
  return 1;
}
