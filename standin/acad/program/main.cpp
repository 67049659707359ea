#include "options.h"
#include "program.h"

#include <exception>
#include <iostream>

int main(int count, char** arguments) {
  try {
    program::Options options;
    int exitStatus = program::kExitUnusable;
    if (!program::readOptions(count, arguments, options, exitStatus))
      return exitStatus;
    return program::run(options);
  } catch (const std::exception& error) {
    std::cerr << "acad: " << error.what() << '\n';
    return program::kExitFailed;
  }
}
