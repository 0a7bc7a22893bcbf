// SPDX-License-Identifier: Apache-2.0
#include "probe/lentBundles.h"

#include "probe/Reporter.h"

#include <array>
#include <atomic>
#include <cstring>
#include <mutex>

namespace norix::probe {
namespace {

constexpr std::size_t kRemembered = 8;
// Beyond this many bytes of parameters a bundle is freed when the library says so.
constexpr std::size_t kLargestKept = 16384;

enum class Loaned { Running, Over, Kept, Freed };

struct Entry {
  Loaned state = Loaned::Freed;
  std::uint64_t request = 0;
  bool isSmall = false;
  bool useReported = false;
};

std::array<Entry, kRemembered> entries;
// The bundle of each entry. Read without the lock, and side by side, to see quickly that a bundle
// was never lent: every call of bundle.h looks.
std::array<std::atomic<const bundle *>, kRemembered> lentBundles{};
std::size_t nextEntry = 0;
std::atomic<bool> anyLent{false};
std::mutex mutex;

std::atomic<const bundle *> &bundleOf(const Entry &entry) {
  return lentBundles[static_cast<std::size_t>(&entry - entries.data())];
}

Entry *find(const bundle *wanted) {
  for (std::size_t at = 0; at < kRemembered; ++at) {
    if (lentBundles[at].load(std::memory_order_relaxed) == wanted) {
      return &entries[at];
    }
  }
  return nullptr;
}

bool wasLent(const bundle *wanted) {
  return wanted != nullptr && anyLent.load(std::memory_order_relaxed) && find(wanted) != nullptr;
}

void reportMisuse(EventKind kind, std::uint64_t request, const char *function) {
  Record misuse(kind);
  misuse.number(Field::Request, static_cast<std::int64_t>(request)).text(Field::Function, function);
  report(misuse);
}

void forget(Entry &entry) {
  auto *const lent = const_cast<bundle *>(bundleOf(entry).exchange(nullptr));
  if (entry.state == Loaned::Kept) {
    freeReally(lent);
  }
}

// The oldest entry whose callback is not running.
Entry &makeRoom() {
  for (std::size_t tried = 0; tried < kRemembered; ++tried) {
    Entry &entry = entries[nextEntry];
    nextEntry = (nextEntry + 1) % kRemembered;
    if (entry.state != Loaned::Running || bundleOf(entry) == nullptr) {
      forget(entry);
      return entry;
    }
  }
  return entries[nextEntry];
}

} // namespace

Loan::Loan(bundle *lent, std::uint64_t request, const RequestTexts &texts) : _lent(lent) {
  const std::lock_guard<std::mutex> lock(mutex);
  Entry *const known = find(lent);
  Entry &entry = known != nullptr ? *known : makeRoom();
  entry.state = Loaned::Running;
  entry.request = request;
  entry.isSmall =
      texts.params == nullptr || strnlen(texts.params, kLargestKept + 1) <= kLargestKept;
  entry.useReported = false;
  bundleOf(entry).store(lent, std::memory_order_relaxed);
  anyLent.store(true, std::memory_order_relaxed);
}

Loan::~Loan() {
  const std::lock_guard<std::mutex> lock(mutex);
  if (Entry *const entry = find(_lent)) {
    entry->state = Loaned::Over;
  }
}

void noteUse(const bundle *used, const char *function) {
  if (!wasLent(used)) {
    return;
  }
  std::uint64_t request = 0;
  {
    const std::lock_guard<std::mutex> lock(mutex);
    Entry *const entry = find(used);
    if (entry == nullptr || entry->state == Loaned::Running || entry->useReported) {
      return;
    }
    entry->useReported = true;
    request = entry->request;
  }
  reportMisuse(EventKind::LentBundleUsed, request, function);
}

bool keepsFromFreeing(bundle *freed, bool isByLibrary) {
  if (!wasLent(freed)) {
    return false;
  }
  std::uint64_t request = 0;
  {
    const std::lock_guard<std::mutex> lock(mutex);
    Entry *const entry = find(freed);
    if (entry == nullptr) {
      return false;
    }
    if (isByLibrary) {
      entry->state = entry->isSmall ? Loaned::Kept : Loaned::Freed;
      return entry->isSmall;
    }
    request = entry->request;
  }
  reportMisuse(EventKind::LentBundleFreed, request, "bundle_free");
  return true;
}

void noteCreated(const bundle *created) {
  if (!wasLent(created)) {
    return;
  }
  const std::lock_guard<std::mutex> lock(mutex);
  if (Entry *const entry = find(created)) {
    bundleOf(*entry).store(nullptr, std::memory_order_relaxed);
  }
}

} // namespace norix::probe
