// SPDX-License-Identifier: Apache-2.0
//
// What all this is about: an application that links libnorix.so. Asked by an assistant that costs
// nothing, as the others are asked with blocking calls, and by the one of this project, which has
// Ecore's loop as well.
#include "application/App.h"
#include "application/BareAssistant.h"
#include "peers/Peer.h"

namespace benchmarks {

namespace {

template <typename Asker>
class Library final : public Peer {
public:
  Library(const std::string &appId, Answering answering)
      : _app(appId, {}), _asker(appId), _answering(answering) {}

  void exchange(std::size_t answerSize, int count, Samples &samples) override {
    _asker.exchange(answerAction(answerSize, _answering), answerSize, count, samples);
  }

private:
  App _app;
  Asker _asker;
  Answering _answering;
};

template <typename Asker>
PeerKind kind(const std::string &name, const std::string &appId, Answering answering) {
  const auto start = [appId, answering](const auto & /*folder*/) {
    return std::make_unique<Library<Asker>>(appId, answering);
  };
  return {name, start, nullptr, ""};
}

} // namespace

PeerKind libraryInCallback() {
  return kind<BareAssistant>("library", "org.example.now", Answering::InCallback);
}

PeerKind libraryInLaterTurn() {
  return kind<BareAssistant>("library, in a later turn", "org.example.later",
                             Answering::InLaterTurn);
}

PeerKind libraryAndAssistant() {
  return kind<Assistant>("library and assistant client", "org.example.both", Answering::InCallback);
}

} // namespace benchmarks
