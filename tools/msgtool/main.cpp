// msgtool: the command-line companion of an msg catalogue. The tool itself
// is in Tool.cpp and its subcommands; see docs/msgtool.md.

#include "Tool.h"

int main(int argc, char** argv) {
  return msgtool::runTool(argc, argv);
}
