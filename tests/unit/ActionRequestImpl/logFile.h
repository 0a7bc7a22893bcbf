// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_UNIT_ACTIONREQUESTIMPL_LOGFILE_H
#define NORIX_TESTS_UNIT_ACTIONREQUESTIMPL_LOGFILE_H

/// The file that the log lines of ActionRequestImpl name.
constexpr const char *kFile = "ActionRequestImpl.cpp";

#endif // NORIX_TESTS_UNIT_ACTIONREQUESTIMPL_LOGFILE_H
