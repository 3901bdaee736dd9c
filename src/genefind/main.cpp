#include "genefind/Cli.h"

int main(int argc, char** argv) {
  return genetrain::RunGenefind(argc, argv);
}
