// SPDX-License-Identifier: Apache-2.0
//
// A gRPC call over a Unix socket, with the synchronous interface on both sides.
#include "peers/Peer.h"
#include "support/Process.h"

#include <grpcpp/grpcpp.h>
#include <question.grpc.pb.h>

#include <cstdint>
#include <cstdio>
#include <stdexcept>

namespace benchmarks {

namespace {

constexpr const char *kName = "gRPC over a Unix socket";
constexpr std::size_t kParametersSize = kRequestSize - sizeof(std::uint32_t);

class Grpc final : public Peer {
public:
  explicit Grpc(const std::filesystem::path &folder)
      : _address("unix:" + (folder / "grpc").string()), _process(serveCommand(kName, {_address})) {
    _process.readLine();
    _stub = proto::Application::NewStub(
        grpc::CreateChannel(_address, grpc::InsecureChannelCredentials()));
    _question.set_parameters(std::string(kParametersSize, 'p'));
  }

  void exchange(std::size_t answerSize, int count, Samples &samples) override {
    _question.set_answer_size(static_cast<std::uint32_t>(answerSize));
    auto start = Samples::Clock::now();
    for (int i = 0; i < count; ++i) {
      grpc::ClientContext context;
      proto::Answer answer;
      const grpc::Status status = _stub->Ask(&context, _question, &answer);
      if (!status.ok()) {
        throw std::runtime_error("gRPC: " + status.error_message());
      }
      checkAnswer(answerSize, answer.text().size());
      start = samples.addSince(start);
    }
  }

private:
  std::string _address;
  support::Process _process;
  std::unique_ptr<proto::Application::Stub> _stub;
  proto::Question _question;
};

class Service final : public proto::Application::Service {
  grpc::Status Ask(grpc::ServerContext * /*context*/, const proto::Question *question,
                   proto::Answer *answer) override {
    answer->set_text(std::string(question->answer_size(), 'a'));
    return grpc::Status::OK;
  }
};

int serve(const std::vector<std::string> &arguments) {
  Service service;
  grpc::ServerBuilder builder;
  builder.AddListeningPort(arguments.at(0), grpc::InsecureServerCredentials());
  builder.RegisterService(&service);
  const std::unique_ptr<grpc::Server> server = builder.BuildAndStart();
  std::puts("ready");
  std::fflush(stdout);
  server->Wait();
  return 0;
}

} // namespace

PeerKind grpcOverUnixSocket() {
  return {kName, [](const auto &folder) { return std::make_unique<Grpc>(folder); }, serve,
          "libgrpc++-dev, libprotobuf-dev and protobuf-compiler-grpc"};
}

} // namespace benchmarks
