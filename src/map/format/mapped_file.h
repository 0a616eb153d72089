#pragma once
// A whole file mapped read-only into memory. The descriptor is closed once the mapping
// exists; the bytes stay valid until the object is destroyed.
#include <cstdint>
#include <filesystem>
#include <span>

namespace orvel {

class MappedFile {
 public:
  enum class Status { Ok, OpenFailed, ReadFailed };

  MappedFile() = default;
  ~MappedFile();
  MappedFile(const MappedFile&) = delete;
  MappedFile& operator=(const MappedFile&) = delete;

  // Maps the file. OpenFailed when it cannot be opened, ReadFailed when its size cannot be
  // taken or it cannot be mapped (also for files of 4 GiB and more: EFBIG); error() then
  // holds the errno. An empty file maps to empty bytes.
  Status open(const std::filesystem::path& path);
  int error() const { return error_; }
  std::span<const uint8_t> bytes() const { return {data_, size_}; }

 private:
  void unmap();

  const uint8_t* data_ = nullptr;
  size_t size_ = 0;
  bool mapped_ = false;
  int error_ = 0;
};

}  // namespace orvel
