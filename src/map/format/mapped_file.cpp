#include "map/format/mapped_file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace orvel {
namespace {

// Map sizes are 32-bit throughout the readers.
constexpr uint64_t kMaxMapSize = 0xFFFFFFFFull;

}  // namespace

MappedFile::~MappedFile() { unmap(); }

void MappedFile::unmap() {
  if (mapped_) munmap(const_cast<uint8_t*>(data_), size_);
  data_ = nullptr;
  size_ = 0;
  mapped_ = false;
}

MappedFile::Status MappedFile::open(const std::filesystem::path& path) {
  unmap();
  error_ = 0;
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    error_ = errno;
    return Status::OpenFailed;
  }

  Status status = Status::Ok;
  struct stat info {};
  if (fstat(fd, &info) != 0) {
    error_ = errno;
    status = Status::ReadFailed;
  } else if (static_cast<uint64_t>(info.st_size) > kMaxMapSize) {
    error_ = EFBIG;
    status = Status::ReadFailed;
  } else if (info.st_size > 0) {
    void* view = mmap(nullptr, static_cast<size_t>(info.st_size), PROT_READ, MAP_PRIVATE, fd, 0);
    if (view == MAP_FAILED) {
      error_ = errno;
      status = Status::ReadFailed;
    } else {
      data_ = static_cast<const uint8_t*>(view);
      size_ = static_cast<size_t>(info.st_size);
      mapped_ = true;
      // Maps are read where the view is, not front to back: read-ahead would only fill
      // memory with pages of tiles that are never drawn.
      ::madvise(view, size_, MADV_RANDOM);
    }
  } else if (!S_ISREG(info.st_mode)) {
    // A size of 0 that is not an empty regular file (a folder, a device) cannot be mapped.
    error_ = S_ISDIR(info.st_mode) ? EISDIR : ENODEV;
    status = Status::ReadFailed;
  }
  ::close(fd);
  return status;
}

}  // namespace orvel
