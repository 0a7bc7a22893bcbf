// SPDX-License-Identifier: Apache-2.0
#include "fakes/Matchers.h"

namespace fake {

testing::Matcher<const std::vector<std::string> &>
TextsAre(std::initializer_list<std::string> texts) {
  return testing::ElementsAreArray(texts);
}

testing::Matcher<const std::vector<Contents> &>
ResponsesAre(std::initializer_list<Contents> responses) {
  return testing::ElementsAreArray(responses);
}

testing::Matcher<const std::vector<Parcel> &> ParcelsAre(std::initializer_list<Parcel> parcels) {
  return testing::ElementsAreArray(parcels);
}

testing::Matcher<const Contents &> EntriesAre(std::initializer_list<Entry> entries) {
  return testing::ElementsAreArray(entries);
}

} // namespace fake
