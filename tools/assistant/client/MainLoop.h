// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLIENT_MAINLOOP_H
#define NORIX_ASSISTANT_CLIENT_MAINLOOP_H

namespace norix::assistant {

/**
 * @brief Ecore, while this object lives.
 * @details For programs that have no loop of their own: a command line, a test, a benchmark. What
 *          becomes of SIGCHLD stays as it was: Ecore would wait for the program's child processes,
 *          and take their exit status away.
 */
class MainLoop {
public:
  /** @throw std::runtime_error when Ecore cannot start */
  MainLoop();
  ~MainLoop();
  MainLoop(const MainLoop &) = delete;
  MainLoop &operator=(const MainLoop &) = delete;
};

} // namespace norix::assistant

#endif
