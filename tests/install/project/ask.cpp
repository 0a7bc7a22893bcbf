// SPDX-License-Identifier: Apache-2.0
//
// ask APP: prints the application's state.
#include <assistant/client/MainLoop.h>
#include <assistant/client/Session.h>

#include <iostream>

using namespace norix::assistant;

int main(int argc, char **argv) {
  if (argc != 2) {
    std::cerr << "usage: ask APP\n";
    return 2;
  }
  MainLoop loop;
  Session session(argv[1]);
  std::cout << session.ask(stateRequest(), 32.0).response.text() << '\n';
}
