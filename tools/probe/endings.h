// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_PROBE_ENDINGS_H
#define NORIX_PROBE_ENDINGS_H

namespace norix::probe {

/// From now on an exit and a deadly signal are reported before they happen.
void watchEndings();

} // namespace norix::probe

#endif
