#include "hosts/terminal/Program.h"

int main(int argc, char** argv) {
  return static_cast<int>(palvex::terminal::runProgram(argc, argv));
}
