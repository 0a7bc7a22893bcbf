// SPDX-License-Identifier: Apache-2.0
#include "probe/Reporter.h"

#include "probe/Connection.h"
#include "probe/heartbeat.h"
#include "probe/json.h"

#include <array>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <pthread.h>
#include <unistd.h>

namespace norix::probe {
namespace {

constexpr const char *kSocketVariable = "NORIX_PROBE_SOCKET";
constexpr int kFormatVersion = 1;

constexpr std::uint64_t kMillisecond = 1000000;
// How long the sending thread sleeps: polling keeps the cost of waking it off the application.
constexpr std::uint64_t kPauseWhenBusy = 2 * kMillisecond;
constexpr std::uint64_t kPauseWhenIdle = 20 * kMillisecond;
constexpr std::uint64_t kPauseBetweenConnects = 500 * kMillisecond;
constexpr std::uint64_t kBusyFor = 200 * kMillisecond;
constexpr std::uint64_t kLongestFlush = 300 * kMillisecond;

// Everything is static: it must be there before the first and after the last static object of the
// application, and nothing is allocated.
Ring ring;
std::array<char, 108> socketPath{};
std::atomic<bool> started{false};
std::atomic<bool> exists{false};
std::atomic<std::uint64_t> lost{0};

// Held by who sends: the thread, or a flush.
std::atomic_flag sending = ATOMIC_FLAG_INIT;
Connection connection;
std::uint64_t nextConnect = 0;
// The number of the next event; a hello has the number 0.
std::uint64_t serial = 1;
std::array<unsigned char, Ring::kLongestRecord> popped;
std::array<char, kLongestLine> greeting;
// What was formatted and not sent yet.
std::array<char, 2 * kLongestLine> waiting;
std::size_t waitingFrom = 0;
std::size_t waitingTo = 0;

void pause(std::uint64_t nanoseconds) {
  const timespec time = {0, static_cast<long>(nanoseconds)};
  nanosleep(&time, nullptr);
}

void format(const void *record, std::size_t size) {
  waitingTo += formatRecord(record, size, serial++, &waiting[waitingTo]);
}

std::uint64_t realTime() {
  timespec time = {};
  clock_gettime(CLOCK_REALTIME, &time);
  return static_cast<std::uint64_t>(time.tv_sec) * 1000 * kMillisecond
         + static_cast<std::uint64_t>(time.tv_nsec);
}

// Whether the reader got it: a new connection has room for a line.
bool greet() {
  std::array<char, 1024> program{};
  const ssize_t length = readlink("/proc/self/exe", program.data(), program.size() - 1);
  Record hello(EventKind::Hello);
  hello.number(Field::Version, kFormatVersion)
      .number(Field::Pid, getpid())
      .text(Field::App, std::getenv("AUL_APPID"))
      .text(Field::Program,
            std::string_view(program.data(), length > 0 ? static_cast<std::size_t>(length) : 0))
      .number(Field::RealTime, static_cast<std::int64_t>(realTime()));
  const std::size_t size = formatRecord(hello.data(), hello.size(), 0, greeting.data());
  return connection.send(greeting.data(), size) == size;
}

// Of a line that was sent in part, the rest is of no use on another connection.
void skipBegunLine() {
  while (waitingFrom > 0 && waitingFrom < waitingTo && waiting[waitingFrom - 1] != '\n') {
    ++waitingFrom;
  }
}

bool connectIfDue() {
  if (connection.isOpen()) {
    return true;
  }
  if (now() < nextConnect) {
    return false;
  }
  nextConnect = now() + kPauseBetweenConnects;
  if (!connection.open(socketPath.data())) {
    return false;
  }
  skipBegunLine();
  if (!greet()) {
    connection.close();
  }
  return connection.isOpen();
}

// Whether all that waits was sent.
bool sendWaiting() {
  while (waitingFrom < waitingTo) {
    const std::size_t sent = connection.send(&waiting[waitingFrom], waitingTo - waitingFrom);
    if (sent == 0) {
      return false;
    }
    waitingFrom += sent;
  }
  waitingFrom = 0;
  waitingTo = 0;
  return true;
}

void reportLost() {
  const std::uint64_t count = lost.exchange(0);
  if (count == 0) {
    return;
  }
  Record dropped(EventKind::Dropped);
  dropped.number(Field::Count, static_cast<std::int64_t>(count));
  serial += count;
  format(dropped.data(), dropped.size());
}

// Sends what the socket takes; whether there was anything to send. Only while holding `sending`.
bool drain() {
  if (!connectIfDue() || !sendWaiting()) {
    return false;
  }
  bool any = false;
  while (connection.isOpen()) {
    reportLost();
    while (waitingTo < kLongestLine) {
      const std::size_t size = ring.pop(popped.data());
      if (size == 0) {
        break;
      }
      format(popped.data(), size);
    }
    if (waitingTo == 0) {
      break;
    }
    any = true;
    if (!sendWaiting()) {
      break;
    }
  }
  return any;
}

void *sendEvents(void * /*unused*/) {
  std::uint64_t lastBusy = now();
  while (true) {
    watchCallback();
    watchLoop();
    if (!sending.test_and_set(std::memory_order_acquire)) {
      if (drain()) {
        lastBusy = now();
      }
      sending.clear(std::memory_order_release);
    }
    pause(now() - lastBusy < kBusyFor ? kPauseWhenBusy : kPauseWhenIdle);
  }
  return nullptr;
}

// The child has a copy of everything but the thread. Its own events, if any, go over a connection
// of its own.
void resetInChild() {
  connection.close();
  ring.reset();
  sending.clear();
  lost = 0;
  serial = 1;
  waitingFrom = 0;
  waitingTo = 0;
  nextConnect = 0;
  started = false;
  forgetThreadId();
}

void startThread() {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  // The application's signals are for the application's threads.
  pthread_sigmask(SIG_SETMASK, &all, &before);
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
  pthread_t thread;
  if (pthread_create(&thread, &attributes, sendEvents, nullptr) == 0) {
    pthread_setname_np(thread, "norix-probe");
  }
  pthread_attr_destroy(&attributes);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

__attribute__((constructor)) void readSocketPath() {
  const char *const path = std::getenv(kSocketVariable);
  if (path == nullptr || *path == '\0' || std::strlen(path) >= socketPath.size()) {
    return;
  }
  std::strcpy(socketPath.data(), path);
  pthread_atfork(nullptr, nullptr, resetInChild);
  exists = true;
}

__attribute__((destructor)) void flushAtExit() {
  flush();
}

} // namespace

bool isReporting() {
  return exists.load(std::memory_order_relaxed);
}

void report(const Record &record) {
  if (!isReporting()) {
    return;
  }
  if (!started.load(std::memory_order_relaxed) && !started.exchange(true)) {
    startThread();
  }
  if (!ring.push(record.data(), record.size())) {
    lost.fetch_add(1, std::memory_order_relaxed);
  }
}

void flush() {
  if (!started.load()) {
    return;
  }
  const std::uint64_t end = now() + kLongestFlush;
  nextConnect = 0;
  while (sending.test_and_set(std::memory_order_acquire)) {
    if (now() > end) {
      return;
    }
    pause(kMillisecond);
  }
  while (drain(), (waitingTo > 0 || lost.load() > 0) && now() < end) {
    pause(kMillisecond);
  }
  sending.clear(std::memory_order_release);
}

} // namespace norix::probe
