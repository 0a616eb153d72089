#pragma once
// What the fuzz targets share: a check that stops the run on a broken promise (libFuzzer
// keeps the input that did it), and the reads a scanning thread hands a receiver protocol.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>

#define FUZZ_CHECK(condition)                                                                \
  do {                                                                                       \
    if (!(condition)) {                                                                      \
      std::fprintf(stderr, "%s:%d: broken promise: %s\n", __FILE__, __LINE__, #condition); \
      std::abort();                                                                          \
    }                                                                                        \
  } while (false)

namespace orvel::fuzz {

// Cuts the input into reads of up to 1024 bytes (empty ones too: a poll that found nothing)
// and the pause before each in milliseconds: mostly short, sometimes past every time-out,
// now and then across the wrap of the tick count. The bytes come from the front of the
// input and the sizes and pauses from its end, so a recorded capture given as input is read
// in its own order.
template <typename Each>
void forEachRead(FuzzedDataProvider& in, Each each) {
  while (in.remaining_bytes() > 0) {
    const uint8_t kind = in.ConsumeIntegral<uint8_t>();
    uint32_t pause = kind;
    if (kind >= 200) pause = kind >= 250 ? in.ConsumeIntegral<uint32_t>() : (kind - 200u) * 150u;
    const size_t size = in.ConsumeIntegralInRange<size_t>(0, 1024);
    const std::vector<uint8_t> bytes = in.ConsumeBytes<uint8_t>(size);
    each(pause, std::span<const uint8_t>(bytes));
  }
}

}  // namespace orvel::fuzz
