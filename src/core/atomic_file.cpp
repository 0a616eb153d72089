#include "core/atomic_file.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <random>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace orvel {
namespace {

bool writeAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(fd, bytes.data(), bytes.size());
    if (written < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    bytes.remove_prefix(static_cast<size_t>(written));
  }
  return true;
}

// A name no other writer (thread or process) uses: <target>.tmp-<pid>-<random>, created
// exclusively so that a clash is noticed and another name tried.
int createTemporary(const std::filesystem::path& target, std::filesystem::path& temporary) {
  std::random_device random;
  for (int attempt = 0; attempt < 16; ++attempt) {
    temporary = target;
    temporary += ".tmp-" + std::to_string(::getpid()) + "-" + std::to_string(random());
    const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd >= 0 || errno != EEXIST) return fd;
  }
  return -1;
}

// A writer killed before its rename leaves its temporary behind; each kill would add one.
// Those of processes that no longer exist are removed before the next write. A live
// process's temporary, and one whose writer cannot be told, are left alone.
void removeStaleTemporaries(const std::filesystem::path& target) {
  const std::string prefix = target.filename().string() + ".tmp-";
  const std::filesystem::path folder = target.parent_path().empty() ? "." : target.parent_path();
  std::error_code error;
  const std::filesystem::directory_iterator end;
  for (auto it = std::filesystem::directory_iterator(folder, error); !error && it != end; it.increment(error)) {
    const std::string name = it->path().filename().string();
    if (name.compare(0, prefix.size(), prefix) != 0) continue;
    // <target>.tmp-<pid>-<random>
    pid_t pid = 0;
    size_t i = prefix.size();
    for (; i < name.size() && name[i] >= '0' && name[i] <= '9' && pid < 100000000; ++i) {
      pid = pid * 10 + (name[i] - '0');
    }
    if (pid <= 0 || i >= name.size() || name[i] != '-') continue;
    if (::kill(pid, 0) == 0 || errno != ESRCH) continue;
    ::unlink(it->path().c_str());
  }
}

// Makes the rename itself durable. Some file systems cannot sync a folder; the new file is
// in place for every reader all the same, so that is not a failure.
void syncFolder(const std::filesystem::path& folder) {
  const int fd = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  ::fsync(fd);
  ::close(fd);
}

}  // namespace

bool writeFileAtomically(const std::filesystem::path& target, std::string_view bytes,
                         BeforeReplaceHook beforeReplace) {
  removeStaleTemporaries(target);
  std::filesystem::path temporary;
  const int fd = createTemporary(target, temporary);
  if (fd < 0) return false;

  struct stat existing {};
  if (::stat(target.c_str(), &existing) == 0 && S_ISREG(existing.st_mode)) {
    ::fchmod(fd, existing.st_mode & 07777);
  }
  bool ok = writeAll(fd, bytes) && ::fsync(fd) == 0;
  ok = ::close(fd) == 0 && ok;
  if (ok) {
    if (beforeReplace) beforeReplace(temporary);
    ok = ::rename(temporary.c_str(), target.c_str()) == 0;
  }
  if (!ok) {
    ::unlink(temporary.c_str());
    return false;
  }
  syncFolder(target.parent_path());
  return true;
}

}  // namespace orvel
