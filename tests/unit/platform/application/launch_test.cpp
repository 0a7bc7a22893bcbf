// SPDX-License-Identifier: Apache-2.0
// Launch requests, and applications that start because somebody wants to reach them.
#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"

#include <Ecore.h>
#include <app_control.h>
#include <app_manager.h>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <rpc-port.h>
#include <string>
#include <sys/wait.h>
#include <system_info.h>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
using support::ScopedVariable;
using testing::ElementsAre;
using testing::StartsWith;

constexpr const char *kApp = "org.example.launched";
constexpr const char *kDefaultLaunch = "control http://tizen.org/appcontrol/operation/default - -";
constexpr double kTickSeconds = 0.005;
constexpr int kMostTicks = 6000;

std::string manifestOf(const std::string &appId, const std::string &exec) {
  return "<manifest package='" + appId + "'><service-application appid='" + appId + "' exec='"
         + exec + "'/></manifest>";
}

// Runs the loop until the condition holds. Returns false after a generous time.
bool runUntil(const std::function<bool()> &condition) {
  int ticks = 0;
  const auto onTick = [](void *data) -> Eina_Bool {
    ++*static_cast<int *>(data);
    return ECORE_CALLBACK_RENEW;
  };
  Ecore_Timer *timer = ecore_timer_add(kTickSeconds, onTick, &ticks);
  bool holds = condition();
  while (!holds && ticks < kMostTicks) {
    ecore_main_loop_iterate_may_block(1);
    holds = condition();
  }
  ecore_timer_del(timer);
  return holds;
}

// The outcome of a request with a callback.
struct Reply {
  int count = 0;
  int result = 1000;
  std::string answer;

  static void note(app_control_h /*request*/, app_control_h reply, app_control_result_e result,
                   void *data) {
    auto *self = static_cast<Reply *>(data);
    ++self->count;
    self->result = result;
    char *text = nullptr;
    if (app_control_get_extra_data(reply, "answer", &text) == APP_CONTROL_ERROR_NONE) {
      self->answer = text;
      free(text);
    }
  }
};

class Request {
public:
  explicit Request(const std::string &operation = {}, const char *appId = kApp) {
    app_control_create(&_handle);
    app_control_set_app_id(_handle, appId);
    if (!operation.empty()) {
      app_control_set_operation(_handle, operation.c_str());
    }
  }
  ~Request() { app_control_destroy(_handle); }
  Request(const Request &) = delete;
  Request &operator=(const Request &) = delete;

  Request &with(const char *key, const char *value) {
    app_control_add_extra_data(_handle, key, value);
    return *this;
  }
  int send(Reply *reply = nullptr) {
    return app_control_send_launch_request(_handle, reply != nullptr ? Reply::note : nullptr,
                                           reply);
  }

private:
  app_control_h _handle = nullptr;
};

// A proxy, and what it was told.
class Proxy {
public:
  Proxy() {
    rpc_port_proxy_create(&_handle);
    rpc_port_proxy_add_connected_event_cb(_handle, onConnected, this);
    rpc_port_proxy_add_rejected_event_cb(_handle, onRejected, this);
  }
  ~Proxy() { rpc_port_proxy_destroy(_handle); }
  Proxy(const Proxy &) = delete;
  Proxy &operator=(const Proxy &) = delete;

  void connect(const char *appId = kApp, const char *port = "message") {
    rpc_port_proxy_connect(_handle, appId, port);
  }
  int connectSync() { return rpc_port_proxy_connect_sync(_handle, kApp, "message"); }

  bool isConnected = false;
  bool isRejected = false;

private:
  static void onConnected(const char *, const char *, rpc_port_h, void *data) {
    static_cast<Proxy *>(data)->isConnected = true;
  }
  static void onRejected(const char *, const char *, void *data) {
    static_cast<Proxy *>(data)->isRejected = true;
  }

  rpc_port_proxy_h _handle = nullptr;
};

class ALaunchedApplication : public testing::Test {
protected:
  ALaunchedApplication() {
    fs::create_directory(_folder / "run");
    fs::permissions(_folder / "run", fs::perms::owner_all);
    ecore_app_no_system_modules();
    ecore_init();
    install(kApp, "launched");
    fs::create_directory(_folder.path() + "/apps/" + kApp + "/bin");
    fs::copy_file(APPLICATION_LAUNCHED, _folder.path() + "/apps/" + kApp + "/bin/launched");
  }
  ~ALaunchedApplication() override {
    for (const std::string &line : seen()) {
      if (line.rfind("create ", 0) == 0) {
        (void)kill(std::stoi(line.substr(7)), SIGKILL);
      }
    }
    ecore_shutdown();
  }

  void install(const std::string &appId, const std::string &exec) {
    (void)_folder.write("apps/" + appId + "/tizen-manifest.xml", manifestOf(appId, exec));
  }

  // What the application has written so far.
  std::vector<std::string> seen() const {
    std::ifstream log(_folder / "log");
    std::vector<std::string> lines;
    for (std::string line; std::getline(log, line);) {
      lines.push_back(line);
    }
    return lines;
  }
  bool awaitLines(std::size_t count) const {
    return runUntil([&] { return seen().size() >= count; });
  }
  static bool isRunning(const char *appId = kApp) {
    bool running = false;
    EXPECT_EQ(app_manager_is_running(appId, &running), APP_MANAGER_ERROR_NONE);
    return running;
  }
  std::string path(const std::string &name) const { return _folder / name; }

private:
  support::TemporaryFolder _folder;
  ScopedVariable _runtime{"XDG_RUNTIME_DIR", _folder / "run"};
  ScopedVariable _apps{"NORIX_DESKTOP_APPS", _folder / "apps"};
  ScopedVariable _id{"AUL_APPID", "org.example.caller"};
  ScopedVariable _log{"LAUNCH_LOG", _folder / "log"};
};

TEST_F(ALaunchedApplication, GetsTheRequestAsItsFirst) {
  EXPECT_EQ(Request("play").with("song", "Five").send(), APP_CONTROL_ERROR_NONE);

  ASSERT_TRUE(awaitLines(2));
  EXPECT_THAT(seen(), ElementsAre(StartsWith("create "), "control play org.example.caller Five"));
}

TEST_F(ALaunchedApplication, GetsFurtherRequestsInTheSameProcess) {
  Request("one").send();
  EXPECT_EQ(Request("two").send(), APP_CONTROL_ERROR_NONE);

  ASSERT_TRUE(awaitLines(3));
  EXPECT_THAT(seen(), ElementsAre(StartsWith("create "), "control one org.example.caller -",
                                  "control two org.example.caller -"));
}

TEST_F(ALaunchedApplication, RepliesToARequest) {
  Reply reply;
  ASSERT_EQ(Request("reply").send(&reply), APP_CONTROL_ERROR_NONE);

  ASSERT_TRUE(runUntil([&] { return reply.count > 0; }));
  EXPECT_EQ(reply.result, APP_CONTROL_RESULT_SUCCEEDED);
  EXPECT_EQ(reply.answer, "42");
}

TEST_F(ALaunchedApplication, CancelsARequestByItsEnd) {
  Reply reply;
  ASSERT_EQ(Request("exit").send(&reply), APP_CONTROL_ERROR_NONE);

  ASSERT_TRUE(runUntil([&] { return reply.count > 0; }));
  EXPECT_EQ(reply.result, APP_CONTROL_RESULT_CANCELED);
}

TEST_F(ALaunchedApplication, IsNotFoundByAPath) {
  EXPECT_EQ(Request("play", "../apps/org.example.launched").send(),
            APP_CONTROL_ERROR_APP_NOT_FOUND);
}

TEST_F(ALaunchedApplication, RunsUntilItsEnd) {
  EXPECT_FALSE(isRunning());

  Request("ignore").send();
  EXPECT_TRUE(isRunning());

  Request("exit").send();
  EXPECT_TRUE(runUntil([] { return !isRunning(); }));
}

TEST_F(ALaunchedApplication, IsLaunchedAgainAfterItsEnd) {
  Request("exit").send();
  ASSERT_TRUE(runUntil([] { return !isRunning(); }));

  EXPECT_EQ(Request("again").send(), APP_CONTROL_ERROR_NONE);

  ASSERT_TRUE(awaitLines(4));
  EXPECT_EQ(seen().back(), "control again org.example.caller -");
}

TEST_F(ALaunchedApplication, StartsForAProxy) {
  Proxy proxy;

  proxy.connect();

  EXPECT_TRUE(runUntil([&] { return proxy.isConnected; }));
  ASSERT_TRUE(awaitLines(2));
  EXPECT_EQ(seen().back(), kDefaultLaunch);
}

TEST_F(ALaunchedApplication, StartsForAProxyThatWaits) {
  Proxy proxy;

  EXPECT_EQ(proxy.connectSync(), RPC_PORT_ERROR_NONE);
}

TEST_F(ALaunchedApplication, StartsOnceHoweverManyProxiesConnect) {
  std::vector<Proxy> proxies(20);
  for (Proxy &proxy : proxies) {
    proxy.connect();
  }

  EXPECT_TRUE(runUntil([&] {
    return std::all_of(proxies.begin(), proxies.end(),
                       [](const Proxy &proxy) { return proxy.isConnected; });
  }));
  ASSERT_TRUE(awaitLines(2));
  EXPECT_EQ(seen().size(), 2U);
}

TEST_F(ALaunchedApplication, StartsOnceHoweverManyProcessesConnect) {
  std::vector<pid_t> callers;
  for (int caller = 0; caller < 8; ++caller) {
    callers.push_back(fork());
    if (callers.back() == 0) {
      Proxy proxy;
      _exit(proxy.connectSync() == RPC_PORT_ERROR_NONE ? EXIT_SUCCESS : EXIT_FAILURE);
    }
  }

  for (const pid_t caller : callers) {
    int status = -1;
    ASSERT_EQ(waitpid(caller, &status, 0), caller);
    EXPECT_EQ(status, 0);
  }
  ASSERT_TRUE(awaitLines(2));
  EXPECT_EQ(seen().size(), 2U);
}

TEST_F(ALaunchedApplication, IsNoChildOfItsLauncher) {
  Request("ignore").send();
  ASSERT_TRUE(awaitLines(1));

  const int pid = std::stoi(seen().front().substr(7));

  EXPECT_EQ(waitpid(pid, nullptr, WNOHANG), -1);
}

// A reader of the launcher's output would otherwise wait for the end of the application.
TEST_F(ALaunchedApplication, SharesNoStreamWithItsLauncherButStandardError) {
  Request("ignore").send();
  ASSERT_TRUE(awaitLines(1));
  const fs::path descriptors = "/proc/" + seen().front().substr(7) + "/fd";

  EXPECT_EQ(fs::read_symlink(descriptors / "0"), "/dev/null");
  EXPECT_EQ(fs::read_symlink(descriptors / "1"), "/dev/null");
  EXPECT_EQ(fs::read_symlink(descriptors / "2"), fs::read_symlink("/proc/self/fd/2"));
}

TEST_F(ALaunchedApplication, InheritsNoOtherDescriptor) {
  const int own = open(path("inherited").c_str(), O_RDONLY | O_CREAT, 0600);
  Request("ignore").send();
  ASSERT_TRUE(awaitLines(1));
  const std::string descriptors = "/proc/" + seen().front().substr(7) + "/fd";

  for (const auto &entry : fs::directory_iterator(descriptors)) {
    std::error_code closedMeanwhile;
    EXPECT_NE(fs::read_symlink(entry, closedMeanwhile), path("inherited"));
  }
  close(own);
}

TEST_F(ALaunchedApplication, DiesOnceForAProxyThatIsThenRejected) {
  const std::string program = path("apps/org.example.brief/bin/brief");
  install("org.example.brief", "brief");
  (void)fs::create_directory(path("apps/org.example.brief/bin"));
  std::ofstream(program) << "#!/bin/sh\necho started >> $LAUNCH_LOG\n";
  fs::permissions(program, fs::perms::owner_all);
  Proxy proxy;

  proxy.connect("org.example.brief");

  EXPECT_TRUE(runUntil([&] { return proxy.isRejected; }));
  EXPECT_EQ(seen().size(), 1U);
}

struct Unlaunchable {
  const char *name;
  const char *appId;
  const char *exec; // Null: not installed.
  int error;
};

void PrintTo(const Unlaunchable &row, std::ostream *out) {
  *out << row.name;
}

class AnUnlaunchableApplication : public ALaunchedApplication,
                                  public testing::WithParamInterface<Unlaunchable> {
protected:
  AnUnlaunchableApplication() {
    if (GetParam().exec != nullptr) {
      install(GetParam().appId, GetParam().exec);
    }
    (void)fs::create_directories(path("apps/outside"));
    fs::copy_file("/bin/true", path("apps/outside/true"));
    std::ofstream(path("apps/outside/text")) << "no program";
  }
};

TEST_P(AnUnlaunchableApplication, IsAnErrorForARequest) {
  EXPECT_EQ(Request("play", GetParam().appId).send(), GetParam().error);
}

TEST_P(AnUnlaunchableApplication, RejectsAProxy) {
  Proxy proxy;

  proxy.connect(*GetParam().appId != '\0' ? GetParam().appId : "org.example.none");

  EXPECT_TRUE(runUntil([&] { return proxy.isRejected; }));
}

INSTANTIATE_TEST_SUITE_P(
    , AnUnlaunchableApplication,
    testing::Values(Unlaunchable{"ThatNobodyKnows", "org.example.none", nullptr,
                                 APP_CONTROL_ERROR_APP_NOT_FOUND},
                    Unlaunchable{"WithoutAnId", "", nullptr, APP_CONTROL_ERROR_APP_NOT_FOUND},
                    Unlaunchable{"WithoutAProgram", "org.example.bad", "missing",
                                 APP_CONTROL_ERROR_LAUNCH_FAILED},
                    Unlaunchable{"WithoutAnExec", "org.example.bad", "",
                                 APP_CONTROL_ERROR_LAUNCH_FAILED},
                    Unlaunchable{"WithAnAbsoluteExec", "org.example.bad", "/bin/true",
                                 APP_CONTROL_ERROR_LAUNCH_FAILED},
                    Unlaunchable{"WhoseExecLeadsOutOfItsFolder", "org.example.bad",
                                 "../outside/true", APP_CONTROL_ERROR_LAUNCH_FAILED}),
    [](const auto &row) { return std::string(row.param.name); });

TEST(ALaunchRequest, KeepsWhatItIsGiven) {
  app_control_h request = nullptr;
  ASSERT_EQ(app_control_create(&request), APP_CONTROL_ERROR_NONE);
  char *text = nullptr;

  EXPECT_EQ(app_control_add_extra_data(request, "key", "first"), APP_CONTROL_ERROR_NONE);
  EXPECT_EQ(app_control_add_extra_data(request, "key", "second"), APP_CONTROL_ERROR_NONE);

  EXPECT_EQ(app_control_get_extra_data(request, "key", &text), APP_CONTROL_ERROR_NONE);
  EXPECT_STREQ(text, "second");
  free(text);
  app_control_destroy(request);
}

TEST(ALaunchRequest, RefusesWhatIsNoEntry) {
  app_control_h request = nullptr;
  ASSERT_EQ(app_control_create(&request), APP_CONTROL_ERROR_NONE);
  char *text = nullptr;

  EXPECT_EQ(app_control_get_extra_data(request, "none", &text), APP_CONTROL_ERROR_KEY_NOT_FOUND);
  EXPECT_EQ(app_control_add_extra_data(request, "", "v"), APP_CONTROL_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(app_control_add_extra_data(request, "k", nullptr), APP_CONTROL_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(app_control_add_extra_data(request, "__AUL_X", "v"), APP_CONTROL_ERROR_KEY_REJECTED);
  EXPECT_EQ(app_control_get_caller(request, &text), APP_CONTROL_ERROR_KEY_NOT_FOUND);
  EXPECT_EQ(app_control_reply_to_launch_request(request, request, APP_CONTROL_RESULT_SUCCEEDED),
            APP_CONTROL_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(text, nullptr);
  app_control_destroy(request);
}

TEST(ALaunchRequest, NeedsItsHandle) {
  char *text = nullptr;

  EXPECT_EQ(app_control_create(nullptr), APP_CONTROL_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(app_control_destroy(nullptr), APP_CONTROL_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(app_control_clone(nullptr, nullptr), APP_CONTROL_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(app_control_set_operation(nullptr, "x"), APP_CONTROL_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(app_control_get_app_id(nullptr, &text), APP_CONTROL_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(app_control_send_launch_request(nullptr, nullptr, nullptr),
            APP_CONTROL_ERROR_INVALID_PARAMETER);
}

TEST(ADesktop, HasNoneOfADevicesFeatures) {
  bool has = true;

  EXPECT_EQ(system_info_get_platform_bool("http://tizen.org/feature/camera", &has),
            SYSTEM_INFO_ERROR_NONE);
  EXPECT_FALSE(has);
  EXPECT_EQ(system_info_get_platform_bool("camera", &has), SYSTEM_INFO_ERROR_INVALID_PARAMETER);
  EXPECT_EQ(system_info_get_platform_bool(nullptr, &has), SYSTEM_INFO_ERROR_INVALID_PARAMETER);
}

} // namespace
