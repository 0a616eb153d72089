#pragma once
// Looking up a host name without letting a slow name server hold up a stop. glibc resolves
// in threads of its own (getaddrinfo_a) while the asking thread polls for the answer and may
// give up at any time. A lookup given up while glibc still works on it is kept here until
// glibc is done with it, since glibc writes into it until then.
#include <netdb.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace orvel {

struct AddressListFree {
  void operator()(addrinfo* list) const { ::freeaddrinfo(list); }
};
using AddressList = std::unique_ptr<addrinfo, AddressListFree>;

class HostLookups {
 public:
  HostLookups();
  // Waits for lookups that were given up while glibc still worked on them; the resolver's
  // own time-outs bound that.
  ~HostLookups();
  HostLookups(const HostLookups&) = delete;
  HostLookups& operator=(const HostLookups&) = delete;

  // The stream socket addresses of host:port, or null when the name is unknown or
  // `cancelled` (asked every few milliseconds) said so first. A numeric address is taken
  // as it is, without asking a name server.
  AddressList lookup(const std::string& host, uint16_t port, const std::function<bool()>& cancelled);

 private:
  struct Request;
  // Frees the given-up lookups that glibc has finished with.
  void reapLocked();

  std::mutex mutex_;
  std::vector<std::unique_ptr<Request>> givenUp_;
};

}  // namespace orvel
