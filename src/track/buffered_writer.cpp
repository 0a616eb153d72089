#include "track/buffered_writer.h"

#include <cerrno>
#include <cstring>
#include <sys/types.h>
#include <unistd.h>

#include "track/le_bytes.h"

namespace orvel {
namespace {

void writeOut(BufferedWriter& writer, const uint8_t* bytes, size_t count) {
  while (count > 0) {
    const ssize_t written = ::write(writer.fd, bytes, count);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) {
      writer.error = true;
      return;
    }
    bytes += written;
    count -= static_cast<size_t>(written);
  }
}

}  // namespace

void writerOpen(BufferedWriter& writer, int fd) {
  writer.fd = fd;
  writer.waiting = 0;
  writer.total = 0;
  writer.error = false;
}

void writerWrite(BufferedWriter& writer, const void* bytes, size_t count) {
  writer.total += count;
  const auto* data = static_cast<const uint8_t*>(bytes);
  if (count > writer.buffer.size()) {
    writerFlush(writer);
    writeOut(writer, data, count);
    return;
  }
  if (writer.buffer.size() - writer.waiting < count) writerFlush(writer);
  if (count > 0) std::memcpy(writer.buffer.data() + writer.waiting, data, count);
  writer.waiting += count;
}

void writerWrite32(BufferedWriter& writer, uint32_t value) {
  uint8_t bytes[4];
  le::store32(bytes, value);
  writerWrite(writer, bytes, sizeof bytes);
}

void writerFlush(BufferedWriter& writer) {
  if (writer.waiting == 0) return;
  writeOut(writer, writer.buffer.data(), writer.waiting);
  writer.waiting = 0;
}

void writerSeek(BufferedWriter& writer, uint64_t position) {
  writerFlush(writer);
  writer.total = position;
  if (::lseek(writer.fd, static_cast<off_t>(position), SEEK_SET) < 0) writer.error = true;
}

}  // namespace orvel
