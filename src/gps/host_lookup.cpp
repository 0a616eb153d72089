#include "gps/host_lookup.h"

#include <ctime>

#include "gps/port_reader.h"

namespace orvel {

struct HostLookups::Request {
  std::string host;
  std::string service;
  addrinfo hints{};
  gaicb block{};

  bool done() const { return ::gai_error(const_cast<gaicb*>(&block)) != EAI_INPROGRESS; }
  // The answer of a finished lookup, now owned by the caller.
  AddressList take() {
    AddressList result(::gai_error(&block) == 0 ? block.ar_result : nullptr);
    block.ar_result = nullptr;
    return result;
  }
};

namespace {

addrinfo streamHints(int flags) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = flags;
  return hints;
}

}  // namespace

HostLookups::HostLookups() = default;

HostLookups::~HostLookups() {
  std::lock_guard lock(mutex_);
  for (const auto& request : givenUp_) {
    const gaicb* list[] = {&request->block};
    while (!request->done()) ::gai_suspend(list, 1, nullptr);
    request->take();
  }
}

void HostLookups::reapLocked() {
  std::erase_if(givenUp_, [](const std::unique_ptr<Request>& request) {
    if (!request->done()) return false;
    request->take();
    return true;
  });
}

AddressList HostLookups::lookup(const std::string& host, uint16_t port, const std::function<bool()>& cancelled) {
  auto request = std::make_unique<Request>();
  request->host = host;
  request->service = std::to_string(port);
  {
    // An address needs no name server and never waits.
    const addrinfo numeric = streamHints(AI_NUMERICHOST);
    addrinfo* found = nullptr;
    if (::getaddrinfo(host.c_str(), request->service.c_str(), &numeric, &found) == 0) return AddressList(found);
  }
  request->hints = streamHints(0);
  request->block.ar_name = request->host.c_str();
  request->block.ar_service = request->service.c_str();
  request->block.ar_request = &request->hints;
  gaicb* list[] = {&request->block};
  {
    std::lock_guard lock(mutex_);
    reapLocked();
  }
  if (::getaddrinfo_a(GAI_NOWAIT, list, 1, nullptr) != 0) return nullptr;
  const timespec slice{0, static_cast<long>(kPollMs) * 1'000'000};
  while (!request->done()) {
    if (cancelled()) {
      // glibc lets go of a lookup it has not begun; one it is working on stays its own.
      if (::gai_cancel(&request->block) == EAI_NOTCANCELED) {
        std::lock_guard lock(mutex_);
        givenUp_.push_back(std::move(request));
        return nullptr;
      }
      request->take();
      return nullptr;
    }
    const gaicb* waiting[] = {&request->block};
    ::gai_suspend(waiting, 1, &slice);
  }
  return request->take();
}

}  // namespace orvel
