// SPDX-License-Identifier: Apache-2.0
#include "soak/Cycles.h"
#include "soak/Soak.h"

#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <random>

int main(int argc, char **argv) {
  CLI::App options("Soaks real applications in load, signals and garbage.", "norix_soak");
  unsigned seconds = 20;
  unsigned long seed = std::random_device()();
  unsigned long cycles = 0;
  std::string logs;
  options.add_option("--seconds", seconds, "How long, after a warm-up");
  options.add_option("--seed", seed, "Where all chance begins");
  options.add_option("--cycles", cycles, "Connects, asks and disconnects so many times instead");
  options.add_option("--logs", logs, "A folder for the logs; a soak empties it")->required();
  CLI11_PARSE(options, argc, argv);

  try {
    if (cycles > 0) {
      std::cout << soak::runCycles(cycles, logs) << std::endl;
      return 0;
    }
    std::cout << "seed " << seed << std::endl;
    std::cout << soak::Soak(seed, logs).run(std::chrono::seconds(seconds)) << std::endl;
    return 0;
  } catch (const std::exception &error) {
    std::cerr << "soak: " << error.what() << "\nThe logs are in " << logs << std::endl;
    return 1;
  }
}
