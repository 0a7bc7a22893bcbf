// SPDX-License-Identifier: Apache-2.0
//
// The allow list, a file that the library reads, and the sender that is looked up in it:
//   length of the sender's id, the id, the file
// The answer is compared with that of a plain search for the line in the text.
#include "NorixImpl/messageService.h"
#include "support/Input.h"
#include "support/check.h"

#include <norix.h>

#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace {

using fuzz::check;
using norix::messageService;

// A file in memory, which the library opens by its number: a disk would set the pace.
int listFile() {
  static const int descriptor = memfd_create("allow_list.dat", MFD_CLOEXEC);
  return descriptor;
}

void writeList(const std::string &content) {
  check(ftruncate(listFile(), 0) == 0
            && pwrite(listFile(), content.data(), content.size(), 0)
                   == static_cast<ssize_t>(content.size()),
        "the allow list can be written");
}

bool isListed(const std::string &sender, const std::string &content) {
  const bool isLine = sender.find('\n') == std::string::npos;
  if (!isLine || content.empty()) {
    return false;
  }
  const std::string lines = "\n" + content + (content.back() == '\n' ? "" : "\n");
  return lines.find("\n" + sender + "\n") != std::string::npos;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  static const std::string name = std::to_string(listFile());
  NORIX_PROXY_ALLOW_APPID_LIST_PATH = "/proc/self/fd/";
  NORIX_PROXY_ALLOW_APPID_LIST_FILE_NAME = name.c_str();
  fuzz::Input input(data, size);
  const std::string sender(input.text());
  const std::string content(input.rest());
  writeList(content);

  messageService service(sender, "instance");
  // The platform's ids end at their first NUL.
  const bool isExpected = isListed(sender.substr(0, sender.find('\0')), content);

  check(service.isPermittedSender() == isExpected, "who is listed is served, and nobody else");
  check(service.UnsetCB() == (isExpected ? 0 : -1), "who is not listed is refused");
  if (!content.empty()) {
    writeList("");
    check(service.isPermittedSender() == isExpected, "a connection keeps the list it has read");
  }
  return 0;
}
