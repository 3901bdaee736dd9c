#include "driver/Entry.h"

int main(int argc, char** argv) {
  return genetrain::RunProgram(argc, argv);
}
