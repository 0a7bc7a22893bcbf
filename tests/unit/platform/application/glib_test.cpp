// SPDX-License-Identifier: Apache-2.0
// What an application that uses GLib meets under its main function.
#include <Ecore.h>
#include <cstdlib>
#include <functional>
#include <glib-unix.h>
#include <gtest/gtest.h>
#include <service_app.h>
#include <stdexcept>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr double kBoundSeconds = 30.0;

using Action = std::function<void()>;

// An application in the test's own process, whose create callback is the test's.
class AGLibApplication : public testing::Test {
protected:
  AGLibApplication() { setenv("AUL_APPID", "org.example.glib", 1); }

  // Runs the application. It ends by end(), or fails the test after a generous time.
  void run(Action create) {
    _create = std::move(create);
    char name[] = "glib";
    char *arguments[] = {name, nullptr};
    service_app_lifecycle_callback_s callbacks = {onCreate, nullptr, nullptr};
    EXPECT_EQ(service_app_main(1, arguments, &callbacks, this), APP_ERROR_NONE);
  }

  static void end() { service_app_exit(); }

  // Calls of GLib and of Ecore; each action is called once.
  void afterMilliseconds(unsigned milliseconds, Action action) {
    g_timeout_add_full(G_PRIORITY_DEFAULT, milliseconds, onGLib, new Action(std::move(action)),
                       release);
  }
  void whenIdle(int priority, Action action) {
    g_idle_add_full(priority, onGLib, new Action(std::move(action)), release);
  }
  void inEcore(Action action) { ecore_timer_add(0.0, onEcore, new Action(std::move(action))); }

  std::string seen;

private:
  static bool onCreate(void *data) {
    auto *self = static_cast<AGLibApplication *>(data);
    self->_bound = ecore_timer_add(kBoundSeconds, onBound, nullptr);
    self->_create();
    return true;
  }
  static Eina_Bool onBound(void * /*data*/) {
    ADD_FAILURE() << "the application does not end";
    service_app_exit();
    return ECORE_CALLBACK_CANCEL;
  }
  static gboolean onGLib(gpointer data) {
    (*static_cast<Action *>(data))();
    return G_SOURCE_REMOVE;
  }
  static Eina_Bool onEcore(void *data) {
    const std::unique_ptr<Action> action(static_cast<Action *>(data));
    (*action)();
    return ECORE_CALLBACK_CANCEL;
  }
  static void release(gpointer data) { delete static_cast<Action *>(data); }

  Action _create;
  Ecore_Timer *_bound = nullptr;
};

TEST_F(AGLibApplication, IsCalledByItsTimeouts) {
  run([this] { afterMilliseconds(1, [] { end(); }); });
}

TEST_F(AGLibApplication, IsCalledByItsDescriptors) {
  int ends[2] = {-1, -1};
  ASSERT_EQ(pipe(ends), 0);
  const auto onReadable = [](gint descriptor, GIOCondition, gpointer data) -> gboolean {
    char byte = 0;
    EXPECT_EQ(read(descriptor, &byte, 1), 1);
    *static_cast<std::string *>(data) += byte;
    end();
    return G_SOURCE_REMOVE;
  };

  run([&] {
    g_unix_fd_add(ends[0], G_IO_IN, onReadable, &seen);
    inEcore([&] { EXPECT_EQ(write(ends[1], "x", 1), 1); });
  });

  EXPECT_EQ(seen, "x");
  close(ends[0]);
  close(ends[1]);
}

TEST_F(AGLibApplication, IsCalledByItsSourcesInTheOrderOfTheirPriorities) {
  run([this] {
    whenIdle(G_PRIORITY_LOW, [this] {
      seen += "low";
      end();
    });
    whenIdle(G_PRIORITY_DEFAULT_IDLE, [this] { seen += "idle "; });
    whenIdle(G_PRIORITY_HIGH, [this] { seen += "high "; });
  });

  EXPECT_EQ(seen, "high idle low");
}

TEST_F(AGLibApplication, IsWokenBySourcesOfAnotherThread) {
  std::thread thread;

  run([&] {
    inEcore([&] { thread = std::thread([this] { whenIdle(G_PRIORITY_DEFAULT, [] { end(); }); }); });
  });

  thread.join();
}

TEST_F(AGLibApplication, IsCalledByBothLoopsWhileOneOfThemNeverRests) {
  int ticks = 0;
  const auto onTick = [](void *data) -> Eina_Bool {
    return ++*static_cast<int *>(data) < 5 ? ECORE_CALLBACK_RENEW : ECORE_CALLBACK_CANCEL;
  };
  const auto whileTicking = [](gpointer data) -> gboolean {
    if (*static_cast<int *>(data) < 5) {
      return G_SOURCE_CONTINUE;
    }
    end();
    return G_SOURCE_REMOVE;
  };

  run([&] {
    ecore_timer_add(0.001, onTick, &ticks);
    g_idle_add(whileTicking, &ticks);
  });

  EXPECT_EQ(ticks, 5);
}

TEST_F(AGLibApplication, MayRunAGMainLoopInsideAnEcoreCallback) {
  run([this] {
    inEcore([this] {
      GMainLoop *loop = g_main_loop_new(nullptr, FALSE);
      afterMilliseconds(1, [this, loop] {
        seen += "inside ";
        g_main_loop_quit(loop);
      });
      g_main_loop_run(loop);
      g_main_loop_unref(loop);
      seen += "outside ";
      afterMilliseconds(1, [this] {
        seen += "after";
        end();
      });
    });
  });

  EXPECT_EQ(seen, "inside outside after");
}

TEST_F(AGLibApplication, MayRunAnEcoreLoopInsideAGLibCallback) {
  run([this] {
    afterMilliseconds(1, [this] {
      afterMilliseconds(1, [this] {
        seen += "inside ";
        ecore_main_loop_quit();
      });
      ecore_main_loop_begin();
      seen += "outside ";
      inEcore([this] {
        seen += "after";
        end();
      });
    });
  });

  EXPECT_EQ(seen, "inside outside after");
}

TEST_F(AGLibApplication, KeepsEcoreRunningWhileAnotherThreadRunsTheContext) {
  GMainLoop *loop = g_main_loop_new(nullptr, FALSE);
  std::thread thread;

  run([&] {
    inEcore([&] {
      thread = std::thread([loop] { g_main_loop_run(loop); });
      while (g_main_loop_is_running(loop) == FALSE) {
        std::this_thread::yield();
      }
      inEcore([] { end(); });
    });
  });

  g_main_loop_quit(loop);
  thread.join();
  g_main_loop_unref(loop);
}

TEST_F(AGLibApplication, IsNotWokenWhileNothingHappens) {
  int turns = 0;
  const auto onTurn = [](void *data) -> Eina_Bool {
    ++*static_cast<int *>(data);
    return ECORE_CALLBACK_RENEW;
  };

  run([&] {
    afterMilliseconds(60000, [] {});
    inEcore([&] {
      ecore_idle_enterer_add(onTurn, &turns);
      afterMilliseconds(100, [] { end(); });
    });
  });

  EXPECT_LE(turns, 4);
}

TEST_F(AGLibApplication, LivesAgainAfterItsEnd) {
  for (const char *life : {"first ", "second "}) {
    run([this, life] {
      afterMilliseconds(1, [this, life] {
        seen += life;
        end();
      });
    });
  }

  EXPECT_EQ(seen, "first second ");
}

TEST_F(AGLibApplication, IsServedInAForkedChildThatGoesOn) {
  pid_t child = -1;

  run([&] {
    afterMilliseconds(1, [&] {
      child = fork();
      ecore_fork_reset();
      afterMilliseconds(1, [] { end(); });
    });
  });

  if (child == 0) {
    _exit(testing::Test::HasFailure() ? EXIT_FAILURE : EXIT_SUCCESS);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

using AGLibApplicationDeathTest = AGLibApplication;

TEST_F(AGLibApplicationDeathTest, EndsWithAnExceptionThatLeavesAGLibCallback) {
  const auto live = [this] {
    run([this] { afterMilliseconds(1, [] { throw std::runtime_error("of the callback"); }); });
  };

  EXPECT_EXIT(live(), testing::KilledBySignal(SIGABRT), "of the callback");
}

} // namespace
