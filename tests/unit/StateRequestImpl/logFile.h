// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_UNIT_STATEREQUESTIMPL_LOGFILE_H
#define NORIX_TESTS_UNIT_STATEREQUESTIMPL_LOGFILE_H

/// The file that the log lines of StateRequestImpl name.
constexpr const char *kFile = "StateRequestImpl.cpp";

#endif // NORIX_TESTS_UNIT_STATEREQUESTIMPL_LOGFILE_H
