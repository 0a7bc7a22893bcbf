// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/Program.h"

int main(int argc, char **argv) {
  return norix::assistant::cli::Program().run(argc, argv);
}
