#include "map/format/byte_reader.h"

#include <gtest/gtest.h>

#include <array>

namespace orvel {
namespace {

TEST(ByteReader, FailedReadLeavesCursorAndOutput) {
  const std::array<uint8_t, 3> data{0xAA, 0xBB, 0xCC};
  ByteReader r(data, 1);
  uint32_t v = 7;
  EXPECT_FALSE(r.u24le(v));
  EXPECT_FALSE(r.u32le(v));
  EXPECT_EQ(v, 7u);
  EXPECT_EQ(r.pos(), 1u);
  uint16_t w = 0;
  EXPECT_TRUE(r.u16le(w));
  EXPECT_EQ(w, 0xCCBB);
}

}  // namespace
}  // namespace orvel
