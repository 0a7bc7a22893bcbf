// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLI_COMMANDS_H
#define NORIX_ASSISTANT_CLI_COMMANDS_H

namespace norix::assistant::cli {

class Program;

// One file per command, named after it.
void addState(Program &program);
void addMcp(Program &program);
void addRun(Program &program);
void addList(Program &program);
void addLaunch(Program &program);
void addMonitor(Program &program);
void addDoctor(Program &program);
void addCertify(Program &program);
void addShell(Program &program);
void addCompletion(Program &program);
void addRecord(Program &program);
void addTest(Program &program);

/// Adds all of them, in the order of --help.
inline void addCommands(Program &program) {
  addLaunch(program);
  addList(program);
  addState(program);
  addRun(program);
  addMcp(program);
  addTest(program);
  addRecord(program);
  addMonitor(program);
  addDoctor(program);
  addCertify(program);
  addShell(program);
  addCompletion(program);
}

} // namespace norix::assistant::cli

#endif
