// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_RECORDING_SERVICE_H
#define NORIX_TESTS_RECORDING_SERVICE_H

#include "message/message.h"

#include "fakes/LibraryTest.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// A stub with services of the test's own: what it calls, in order, and with what.
struct Recorded {
  std::vector<std::string> events;
  /// What SetCB and UnsetCB return.
  int result = 0;
  /// Whether SetCB keeps its delegate.
  bool keepsDelegate = true;
  std::vector<std::unique_ptr<rpc_port::message::stub::message::ResponseCB>> delegates;
  /// The latest delegate, also when it is gone.
  const void *lastDelegate = nullptr;
  std::vector<fake::Contents> requests;
  std::function<void()> onSend;
  std::function<void()> onCreate;

  void add(const std::string &event) {
    const fake::OutsideLibrary outside;
    events.push_back(event);
  }
};

class RecordingService : public rpc_port::message::stub::message::ServiceBase {
public:
  using Message = rpc_port::message::stub::message;

  class Factory final : public ServiceBase::Factory {
  public:
    explicit Factory(Recorded &recorded) : _recorded(recorded) {}
    ~Factory() { _recorded.add("factory destroyed"); }

    std::unique_ptr<ServiceBase> CreateService(std::string senderId,
                                               std::string instanceId) override {
      _recorded.add("create " + senderId + " " + instanceId);
      return std::make_unique<RecordingService>(_recorded, std::move(senderId),
                                                std::move(instanceId));
    }

  private:
    Recorded &_recorded;
  };

  RecordingService(Recorded &recorded, std::string senderId, std::string instanceId)
      : ServiceBase(std::move(senderId), std::move(instanceId)), _recorded(recorded) {}
  ~RecordingService() override { _recorded.add("destroyed " + GetInstance()); }

  void OnCreate() override {
    _recorded.add("OnCreate " + GetInstance());
    run(_recorded.onCreate);
  }

  void OnTerminate() override { _recorded.add("OnTerminate " + GetInstance()); }

  int SetCB(std::unique_ptr<Message::ResponseCB> delegate) override {
    _recorded.add("SetCB " + delegate->GetTag());
    _recorded.lastDelegate = delegate.get();
    if (_recorded.keepsDelegate) {
      const fake::OutsideLibrary outside;
      _recorded.delegates.push_back(std::move(delegate));
    }
    return _recorded.result;
  }

  int UnsetCB() override {
    _recorded.add("UnsetCB");
    return _recorded.result;
  }

  void Send(rpc_port::message::Bundle request) override {
    _recorded.add("Send to " + GetSender());
    const fake::OutsideLibrary outside;
    if (request.GetHandle() != nullptr) {
      _recorded.requests.push_back(fake::contentsOf(request.GetHandle()));
    }
    run(_recorded.onSend);
  }

private:
  static void run(const std::function<void()> &action) {
    const fake::OutsideLibrary outside;
    if (action) {
      action();
    }
  }

  Recorded &_recorded;
};

class StubTest : public fake::LibraryTest {
protected:
  using Message = rpc_port::message::stub::message;

  void makesStub() {
    fake::library([this] {
      stub = std::make_unique<Message>();
      return 0;
    });
  }
  void listens() {
    fake::library([this] {
      stub->Listen(std::make_shared<RecordingService::Factory>(recorded));
      return 0;
    });
  }
  void destroysStub() {
    fake::library([this] {
      stub.reset();
      return 0;
    });
  }
  void TearDown() override {
    destroysStub();
    recorded.delegates.clear();
    LibraryTest::TearDown();
  }

  Recorded recorded;
  std::unique_ptr<Message> stub;
};

/// Listening, with nothing recorded so far.
class ListeningStubTest : public StubTest {
protected:
  void SetUp() override {
    makesStub();
    listens();
    forgetCalls();
  }
};

/// With the assistant connected.
class ConnectedStubTest : public ListeningStubTest {
protected:
  void SetUp() override {
    ListeningStubTest::SetUp();
    assistant.connects();
    recorded.events.clear();
    forgetCalls();
  }
};

#endif
