// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/Program.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

// A closed standard stream would give its number to the next file or socket. What takes its place
// fails as the stream itself would: input cannot be read, output cannot be written.
void occupyStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) < 0) {
      (void)open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
  }
}

} // namespace

int main(int argc, char **argv) {
  occupyStandardStreams();
  return norix::assistant::cli::Program().run(argc, argv);
}
