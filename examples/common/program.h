// The frame of an example program: options in, one line on stderr and exit code 1 for whatever fails.
#ifndef ZVP_EXAMPLES_COMMON_PROGRAM_H
#define ZVP_EXAMPLES_COMMON_PROGRAM_H

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <new>
#include <string>

namespace examples {

// Parses the command line into what the app's options are bound to, then calls run().
template <class Run>
int runProgram(CLI::App& app, int argc, char** argv, Run run) {
  const std::string name = app.get_name();
  app.failure_message([name](const CLI::App*, const CLI::Error& error) {
    return name + ": " + error.what() + " (" + name + " --help shows the usage)\n";
  });
  CLI11_PARSE(app, argc, argv);
  try {
    run();
  } catch (const std::bad_alloc&) {
    std::fprintf(stderr, "%s: not enough memory\n", name.c_str());
    return 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", name.c_str(), error.what());
    return 1;
  }
  return 0;
}

}  // namespace examples

#endif
