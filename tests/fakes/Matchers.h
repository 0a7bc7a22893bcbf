// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FAKES_MATCHERS_H
#define NORIX_FAKES_MATCHERS_H

#include "fakes/Values.h"

#include <gmock/gmock.h>

#include <initializer_list>
#include <string>
#include <vector>

namespace fake {

/// testing::ElementsAre for the lists that nearly every test compares. These are compiled once;
/// testing::ElementsAre is compiled anew for each number and each combination of its arguments,
/// which takes most of the time that a test file needs.
testing::Matcher<const std::vector<std::string> &>
TextsAre(std::initializer_list<std::string> texts);
testing::Matcher<const std::vector<Contents> &>
ResponsesAre(std::initializer_list<Contents> responses);
testing::Matcher<const std::vector<Parcel> &> ParcelsAre(std::initializer_list<Parcel> parcels);
testing::Matcher<const Contents &> EntriesAre(std::initializer_list<Entry> entries);

} // namespace fake

#endif
