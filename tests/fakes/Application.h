// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FAKES_APPLICATION_H
#define NORIX_FAKES_APPLICATION_H

#include <app_info.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

struct app_info_s {
  int number;
};

namespace fake {

/// The application as the platform knows it: its id and its manifest's metadata.
class Application {
public:
  /// Without an id the process was not launched as an application.
  std::optional<std::string> id;
  /// The result of app_get_id, also when it delivers an id.
  int idResult = 0;
  std::vector<std::pair<std::string, std::string>> metadata;

  app_info_h createInfo();
  bool destroyInfo(app_info_h handle);
  app_info_h find(app_info_h handle) const;
  size_t infosAlive() const { return _infos.size(); }

private:
  std::vector<std::unique_ptr<app_info_s>> _infos;
  /// Kept, so that a stale handle never equals that of a new object.
  std::vector<std::unique_ptr<app_info_s>> _destroyed;
  int _created = 0;
};

} // namespace fake

#endif
