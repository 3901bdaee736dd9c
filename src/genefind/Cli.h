#ifndef GENETRAIN_GENEFIND_CLI_H
#define GENETRAIN_GENEFIND_CLI_H

namespace genetrain {

// The whole genefind program: reads the command line once into the chosen command's options
// and runs the command. Returns the exit status: 0 on success (and for --help and --version),
// 1 when the work fails, 2 for an unknown or malformed option.
int RunGenefind(int argc, const char* const* argv);

}  // namespace genetrain

#endif
