#pragma once
// A small write buffer over a file descriptor that knows the file position it has reached,
// so that length fields written earlier can be patched by seeking back.
#include <array>
#include <cstddef>
#include <cstdint>

namespace orvel {

inline constexpr size_t kWriterBufferSize = 4096;

struct BufferedWriter {
  int fd = -1;
  std::array<uint8_t, kWriterBufferSize> buffer{};
  size_t waiting = 0;   // bytes in `buffer` not yet written
  uint64_t total = 0;   // the file position as far as the writer knows
  bool error = false;   // set when a write put fewer bytes than asked
};

// Starts writing to `fd` (which stays the caller's to close) at position 0.
void writerOpen(BufferedWriter& writer, int fd);
// Buffers `count` bytes; a block larger than the buffer goes to the file directly.
void writerWrite(BufferedWriter& writer, const void* bytes, size_t count);
void writerWrite32(BufferedWriter& writer, uint32_t value);  // little-endian
void writerFlush(BufferedWriter& writer);
// Flushes, then continues writing at `position` from the start of the file.
void writerSeek(BufferedWriter& writer, uint64_t position);

}  // namespace orvel
